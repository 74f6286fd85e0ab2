#include "Tarnwick/Settings/PaneFontSize.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

double sizeFor(std::string const &setting)
{
    MemoryDefaults defaults;
    defaults.setText("tw.paneFontSize", setting);
    return paneFontSize(defaults);
}

TEST(PaneFontSizeTest, isTwelveWithoutASetting)
{
    MemoryDefaults const defaults;
    EXPECT_DOUBLE_EQ(paneFontSize(defaults), 12);
}

TEST(PaneFontSizeTest, isWhatTheSettingSays)
{
    EXPECT_DOUBLE_EQ(sizeFor("15"), 15);
    EXPECT_DOUBLE_EQ(sizeFor("10.5"), 10.5);
}

TEST(PaneFontSizeTest, staysBetweenNineAndTwenty)
{
    EXPECT_DOUBLE_EQ(sizeFor("3"), 9);
    EXPECT_DOUBLE_EQ(sizeFor("200"), 20);
    EXPECT_DOUBLE_EQ(sizeFor("inf"), 20);
}

TEST(PaneFontSizeTest, isTwelveForWhatIsNoSize)
{
    for (std::string const setting : {"", "large", "12pt", "0", "-5", "nan", "1,5"})
        EXPECT_DOUBLE_EQ(sizeFor(setting), 12) << setting;
}

} // namespace
} // namespace tw::test
