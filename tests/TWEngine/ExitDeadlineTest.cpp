#include "TWEngine/Runtime/ExitDeadline.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace tw::test {
namespace {

TEST(ExitDeadlineTest, aProcessThatDoesNotEndByItselfIsEnded)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            setExitDeadline(std::chrono::milliseconds(1));
            for (;;)
                pause();
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(ExitDeadlineTest, aProcessThatEndsEarlierKeepsItsStatus)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            setExitDeadline(std::chrono::hours(1));
            _exit(7);
        },
        ::testing::ExitedWithCode(7), "");
}

} // namespace
} // namespace tw::test
