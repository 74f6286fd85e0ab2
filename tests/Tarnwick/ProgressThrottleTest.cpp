#include "Tarnwick/Operations/ProgressThrottle.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

class ProgressThrottleTest : public ::testing::Test {
protected:
    bool reports(std::string item, std::int64_t bytes)
    {
        return throttle.shouldReport({.bytes = bytes, .item = std::move(item)});
    }

    static constexpr auto step = ProgressThrottle::step;
    ProgressThrottle throttle;
};

TEST_F(ProgressThrottleTest, everyItemIsReported)
{
    EXPECT_TRUE(reports("a", 0));
    EXPECT_TRUE(reports("b", 1));
    EXPECT_TRUE(reports("a", 2));
}

TEST_F(ProgressThrottleTest, anItemIsReportedOnceForEachStep)
{
    EXPECT_TRUE(reports("a", 0));
    EXPECT_FALSE(reports("a", step - 1));
    EXPECT_TRUE(reports("a", step));
    EXPECT_FALSE(reports("a", 2 * step - 1));
    EXPECT_TRUE(reports("a", 2 * step));
}

TEST_F(ProgressThrottleTest, stepsAreCountedFromTheBeginningOfAnItem)
{
    EXPECT_TRUE(reports("a", 100));
    EXPECT_FALSE(reports("a", step));
    EXPECT_TRUE(reports("a", step + 100));
}

} // namespace
} // namespace tw::test
