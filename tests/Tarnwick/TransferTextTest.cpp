#include "Tarnwick/Transfers/TransferText.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::chrono_literals;

TEST(TransferTextTest, filesAreCountedOfTheWhole)
{
    EXPECT_EQ(TransferText::files({.files = 412, .totalFiles = 10'000}), "412 of 10,000 files");
    EXPECT_EQ(TransferText::files({.files = 1'234'567, .totalFiles = 1'234'568}), "1,234,567 of 1,234,568 files");
    EXPECT_EQ(TransferText::files({.files = 0, .totalFiles = 1}), "0 of 1 file");
    EXPECT_EQ(TransferText::files({.files = 1, .totalFiles = 20, .unit = ProgressState::Unit::items}), "1 of 20 items");
}

TEST(TransferTextTest, withoutAWholeOnlyWhatIsDoneIsCounted)
{
    EXPECT_EQ(TransferText::files({}), "");
    EXPECT_EQ(TransferText::files({.files = 1}), "1 file");
    EXPECT_EQ(TransferText::files({.files = 100}), "100 files");
}

TEST(TransferTextTest, speedIsASizeASecond)
{
    EXPECT_EQ(TransferText::speed(5.0 * 1024 * 1024), "5.0M/s");
    EXPECT_EQ(TransferText::speed(0), "stalled");
}

TEST(TransferTextTest, theTimeLeftIsRoundedUpAsAPersonWouldSayIt)
{
    EXPECT_EQ(TransferText::timeLeft(0s), "a few seconds left");
    EXPECT_EQ(TransferText::timeLeft(21s), "25 s left");
    EXPECT_EQ(TransferText::timeLeft(60s), "1 min left");
    EXPECT_EQ(TransferText::timeLeft(61s), "2 min left");
    EXPECT_EQ(TransferText::timeLeft(3h), "3 h left");
    EXPECT_EQ(TransferText::timeLeft(3h + 16min), "3 h 20 min left");
    EXPECT_EQ(TransferText::timeLeft(25h), "more than a day left");
}

} // namespace
} // namespace tw::test
