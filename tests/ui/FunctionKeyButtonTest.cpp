#include "Tarnwick/Toolkit/Commands/FunctionKeyButton.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

TEST(FunctionKeyButtonTest, eachTickGoesTheSameShareOfTheWay)
{
    EXPECT_DOUBLE_EQ(FunctionKeyButton::washAfterTick(0, 1), 0.28);
    EXPECT_DOUBLE_EQ(FunctionKeyButton::washAfterTick(1, 0), 0.72);
    EXPECT_DOUBLE_EQ(FunctionKeyButton::washAfterTick(0.5, 1), 0.64);
}

TEST(FunctionKeyButtonTest, theLastBitIsGoneAtOnce)
{
    EXPECT_EQ(FunctionKeyButton::washAfterTick(0.99, 1), 1);
    EXPECT_EQ(FunctionKeyButton::washAfterTick(0.01, 0), 0);
    auto wash = 0.0;
    auto ticks = 0;
    for (; wash != 1.0 && ticks < 100; ++ticks)
        wash = FunctionKeyButton::washAfterTick(wash, 1);
    EXPECT_EQ(ticks, 15);
}

} // namespace
} // namespace tw::test
