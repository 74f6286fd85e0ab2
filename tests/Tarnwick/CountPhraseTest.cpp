#include "Tarnwick/Operations/CountPhrase.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

TEST(CountPhraseTest, oneItemIsSingular)
{
    EXPECT_EQ(countPhrase(0), "0 items");
    EXPECT_EQ(countPhrase(1), "1 item");
    EXPECT_EQ(countPhrase(10000), "10000 items");
}

TEST(CountPhraseTest, thousandsAreSetApart)
{
    EXPECT_EQ(grouped(0), "0");
    EXPECT_EQ(grouped(999), "999");
    EXPECT_EQ(grouped(10000), "10,000");
    EXPECT_EQ(grouped(1234567), "1,234,567");
    EXPECT_EQ(grouped(-100), "-100");
    EXPECT_EQ(grouped(-1000), "-1,000");
}

} // namespace
} // namespace tw::test
