#include "TWCore/Model/PollInterval.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

TEST(PollIntervalTest, withoutAProbeItIsTheShortestAndHasNotBackedOff)
{
    PollInterval const interval;
    EXPECT_EQ(interval.seconds(), 3.0);
    EXPECT_FALSE(interval.hasBackedOff());
}

TEST(PollIntervalTest, probesTakeTwoPercentOfTheTime)
{
    PollInterval interval;
    interval.observed(0.1);
    EXPECT_DOUBLE_EQ(interval.seconds(), 5.0);
    EXPECT_TRUE(interval.hasBackedOff());
    interval.observed(1.0);
    EXPECT_DOUBLE_EQ(interval.seconds(), 18.5);
}

TEST(PollIntervalTest, itStaysBetweenItsBounds)
{
    struct Case {
        double cost;
        double seconds;
    };

    for (auto const &each : {Case{-1, 3}, Case{0, 3}, Case{0.06, 3}, Case{0.6, 30}, Case{9, 30}}) {
        PollInterval interval;
        interval.observed(each.cost);
        EXPECT_DOUBLE_EQ(interval.seconds(), each.seconds) << each.cost;
    }
}

TEST(PollIntervalTest, afterAChangeFiveProbesAreFast)
{
    PollInterval interval;
    interval.observed(1.0);
    interval.sawChange();
    for (int probe = 0; probe < 5; ++probe) {
        EXPECT_EQ(interval.seconds(), 3.0);
        EXPECT_FALSE(interval.hasBackedOff());
        interval.observed(1.0);
    }
    EXPECT_EQ(interval.seconds(), 30.0);
    interval.reset();
    EXPECT_EQ(interval.seconds(), 3.0);
}

} // namespace
} // namespace tw::test
