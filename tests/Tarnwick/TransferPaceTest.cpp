#include "Tarnwick/Transfers/TransferPace.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::chrono_literals;

class TransferPaceTest : public testing::Test {
protected:
    void note(std::chrono::milliseconds at, std::int64_t bytes) { pace.note(TransferPace::Time(1h) + at, bytes); }

    /// From 0 to `end`, reported every 10 ms.
    void run(std::chrono::milliseconds end, double bytesPerSecond)
    {
        for (auto at = 0ms; at <= end; at += 10ms)
            note(at, static_cast<std::int64_t>(bytesPerSecond * std::chrono::duration<double>(at).count()));
    }

    TransferPace pace;
};

TEST_F(TransferPaceTest, nothingIsSaidBeforeThereIsASecondToJudgeBy)
{
    EXPECT_EQ(pace.speed(), std::nullopt);
    note(0ms, 0);
    note(999ms, 5000);
    EXPECT_EQ(pace.speed(), std::nullopt);
    EXPECT_EQ(pace.timeLeft(10'000), std::nullopt);
    note(1000ms, 5000);
    EXPECT_EQ(pace.speed(), 5000.0);
}

TEST_F(TransferPaceTest, speedIsThatOfTheLastSecondsAlone)
{
    run(60s, 1000);
    for (auto at = 60s + 10ms; at <= 67s; at += 10ms)
        note(at, 60'000 + (at - 60s).count() * 2);
    EXPECT_NEAR(*pace.speed(), 2000, 1);
}

TEST_F(TransferPaceTest, whatStandsStillHasNoTimeLeft)
{
    run(10s, 1000);
    for (std::chrono::milliseconds at = 10s; at <= 16s; at += 200ms)
        note(at, 10'000);
    EXPECT_EQ(pace.speed(), 0.0);
    EXPECT_EQ(pace.timeLeft(20'000), std::nullopt);
}

TEST_F(TransferPaceTest, theTimeLeftIsWhatTheRestTakesAtThisSpeed)
{
    run(10s, 1000);
    EXPECT_EQ(pace.timeLeft(40'000), 30s);
    EXPECT_EQ(pace.timeLeft(5000), 0s) << "more has come than was announced";
}

TEST_F(TransferPaceTest, anAbsurdTotalIsATimeAllTheSame)
{
    run(10s, 1);
    EXPECT_GT(*pace.timeLeft(std::numeric_limits<std::int64_t>::max()), 24h);
}

TEST_F(TransferPaceTest, fewerBytesThanBeforeBeginAnew)
{
    run(10s, 1000);
    note(10'100ms, 0);
    EXPECT_EQ(pace.speed(), std::nullopt);
    note(11'100ms, 300);
    EXPECT_EQ(pace.speed(), 300.0);
}

} // namespace
} // namespace tw::test
