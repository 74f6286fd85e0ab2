#include "Tarnwick/Panes/NameSurviving.h"

#include "tests/support/Listings.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

std::string survivor(std::vector<std::string> const &removed)
{
    PaneModel rows;
    rows.setSnapshot(listing("/srv", {file(".hidden"), file("a"), file("b"), file("c"), file("d")}));
    return nameSurviving(rows, removed);
}

TEST(NameSurvivingTest, theNameBelowTheLastThatGoes)
{
    EXPECT_EQ(survivor({"b"}), "c");
    EXPECT_EQ(survivor({"c", "a"}), "d");
}

TEST(NameSurvivingTest, atTheEndTheNearestNameAboveThatStays)
{
    EXPECT_EQ(survivor({"d"}), "c");
    EXPECT_EQ(survivor({"b", "d", "c"}), "a");
    EXPECT_EQ(survivor({"d", "b"}), "c");
}

TEST(NameSurvivingTest, noneWhereNothingStaysOrNothingGoes)
{
    EXPECT_EQ(survivor({"a", "b", "c", "d"}), "");
    EXPECT_EQ(survivor({}), "");
    EXPECT_EQ(survivor({".hidden", "elsewhere"}), "") << "names that are not on show";
    EXPECT_EQ(nameSurviving(PaneModel(), std::vector<std::string>{"a"}), "");
}

} // namespace
} // namespace tw::test
