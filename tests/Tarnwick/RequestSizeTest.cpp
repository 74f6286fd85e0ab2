#include "Tarnwick/Operations/RequestSize.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using std::chrono_literals::operator""ms;

TEST(RequestSizeTest, aRequestTakesAboutAsLongAsAPersonWaitsForANumber)
{
    RequestSize size;
    EXPECT_EQ(size.items(), 100U);
    size.took(50ms); // a round trip to a distant host
    EXPECT_EQ(size.items(), 1000U);
    size.took(50ms);
    EXPECT_EQ(size.items(), 10'000U);
    size.took(5000ms);
    EXPECT_EQ(size.items(), 1000U);
}

TEST(RequestSizeTest, itStaysWithinItsBounds)
{
    RequestSize size;
    for (int index = 0; index < 10; ++index)
        size.took(0ms);
    EXPECT_EQ(size.items(), RequestSize::most);
    for (int index = 0; index < 10; ++index)
        size.took(60'000ms);
    EXPECT_EQ(size.items(), 1U);
}

} // namespace
} // namespace tw::test
