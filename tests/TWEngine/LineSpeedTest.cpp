#include "TWEngine/Shell/LineSpeed.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kibibyte = 1U << 10U;
constexpr std::size_t mebibyte = 1U << 20U;

TEST(LineSpeedTest, anUnknownLineHasTheLeastRoom)
{
    EXPECT_EQ(LineSpeed().room(mebibyte), LineSpeed::leastRoom);
    EXPECT_EQ(LineSpeed().room(1000), 1000U) << "never more than the most";
}

TEST(LineSpeedTest, theRoomIsWhatTheLineCarriesInTheTimeAhead)
{
    LineSpeed line;
    line.note(100 * kibibyte, 100ms);
    EXPECT_EQ(line.room(mebibyte), 153'600U);
    line.note(mebibyte, 10ms);
    EXPECT_EQ(line.room(mebibyte), mebibyte);
}

TEST(LineSpeedTest, aSlowLineHasTheLeastRoom)
{
    LineSpeed line;
    line.note(64 * kibibyte, 260ms);
    EXPECT_EQ(line.room(mebibyte), LineSpeed::leastRoom);
}

TEST(LineSpeedTest, theRoundTripIsNotTheFaultOfTheLine)
{
    LineSpeed line;
    line.note(200, 50ms);
    line.note(300, 90ms);
    EXPECT_EQ(line.roundTrip(), 50ms);
    line.note(100'000, 150ms);
    EXPECT_DOUBLE_EQ(line.bytesPerSecond(), 1e6);
}

TEST(LineSpeedTest, aShortAnswerSaysNothingOfTheSpeed)
{
    LineSpeed line;
    line.note(10 * kibibyte, 1ms);
    EXPECT_EQ(line.bytesPerSecond(), 0);
}

TEST(LineSpeedTest, aSlowAnswerMayBeTheFaultOfTheHost)
{
    LineSpeed line;
    line.note(mebibyte, 100ms);
    auto const fast = line.bytesPerSecond();
    line.note(mebibyte, 10s);
    EXPECT_GT(line.bytesPerSecond(), fast / 2);
    for (int index = 0; index < 20; ++index)
        line.note(mebibyte, 10s);
    EXPECT_LT(line.bytesPerSecond(), fast / 50) << "a line that stays slow is slow";
}

TEST(LineSpeedTest, anAnswerFasterThanTheRoundTripIsStillFinite)
{
    LineSpeed line;
    line.note(200, 50ms);
    line.note(mebibyte, 40ms);
    EXPECT_DOUBLE_EQ(line.bytesPerSecond(), static_cast<double>(mebibyte) * 1000);
    EXPECT_EQ(line.room(mebibyte), mebibyte);
}

} // namespace
} // namespace tw::test
