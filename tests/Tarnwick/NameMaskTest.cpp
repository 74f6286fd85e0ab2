#include "Tarnwick/Table/NameMask.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

bool matches(std::string_view mask, std::string const &name)
{
    return NameMask(mask).matches(name);
}

TEST(NameMaskTest, aStarStandsForAnyText)
{
    EXPECT_TRUE(matches("*.txt", "a.txt"));
    EXPECT_TRUE(matches("*.txt", ".txt"));
    EXPECT_FALSE(matches("*.txt", "a.txt~"));
    EXPECT_TRUE(matches("*", ".hidden"));
    EXPECT_TRUE(matches("a*b*c", "a-b-b-c"));
    EXPECT_FALSE(matches("a*b*c", "a-c-b"));
    EXPECT_TRUE(matches("**a**", "a"));
    EXPECT_FALSE(matches("ab*ba", "aba")) << "both ends need their own letters";
}

TEST(NameMaskTest, starDotStarNeedsADot)
{
    EXPECT_TRUE(matches("*.*", "a.b"));
    EXPECT_TRUE(matches("*.*", "."));
    EXPECT_FALSE(matches("*.*", "Makefile"));
}

TEST(NameMaskTest, withoutAWildcardTheWholeNameCounts)
{
    EXPECT_TRUE(matches("a", "a"));
    EXPECT_FALSE(matches("a", "ab"));
    EXPECT_FALSE(matches("a", "A")) << "case counts";
}

TEST(NameMaskTest, otherSignsMeanWhatTheyMeanInAShell)
{
    EXPECT_TRUE(matches("?.c", "a.c"));
    EXPECT_FALSE(matches("?.c", "ab.c"));
    EXPECT_TRUE(matches("[a-c]*", "bcd"));
    EXPECT_FALSE(matches("[!a-c]*", "bcd"));
    EXPECT_TRUE(matches("\\*", "*"));
    EXPECT_FALSE(matches("\\*", "a"));
    EXPECT_TRUE(matches("[abc", "[abc")) << "an unclosed bracket stands for itself";
    EXPECT_FALSE(matches("[abc", "a"));
}

TEST(NameMaskTest, severalPatternsStandBetweenBlanksAndSemicolons)
{
    for (auto const *const mask : {"*.txt;*.md", "*.txt *.md", " ;*.txt; ;*.md;"}) {
        EXPECT_TRUE(matches(mask, "a.txt")) << mask;
        EXPECT_TRUE(matches(mask, "a.md")) << mask;
        EXPECT_FALSE(matches(mask, "a.c")) << mask;
    }
}

TEST(NameMaskTest, withoutAPatternNothingMatches)
{
    EXPECT_FALSE(matches("", "a"));
    EXPECT_FALSE(matches(" ; ", "a"));
}

TEST(NameMaskTest, aNameNeedNotBeText)
{
    EXPECT_TRUE(matches("*.txt", "\xFF\xFE.txt"));
    EXPECT_TRUE(matches("*", "\xFF"));
}

TEST(NameMaskTest, aMaskOfStarsAloneTakesNoTimeThatGrowsWithTheirNumber)
{
    std::string mask;
    for (int i = 0; i < 300; ++i)
        mask += "*a";
    EXPECT_FALSE(matches(mask, std::string(255, 'a')));
    EXPECT_TRUE(matches(mask, std::string(300, 'a')));
}

} // namespace
} // namespace tw::test
