#include "Tarnwick/Session/SessionText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::HasSubstr;

SideStates twoSides()
{
    return {{{.tabs = {{.connection = "local", .path = "/usr", .sortKey = "size", .sortAscending = false},
                       {.connection = "web", .path = "/srv", .showHidden = true}},
              .active = 1},
             {.tabs = {{.connection = "local", .path = ""}}, .active = 0}}};
}

TEST(SessionTextTest, bothSidesComeBackAsTheyWere)
{
    EXPECT_EQ(SessionText::sidesFrom(SessionText::encode(twoSides())), twoSides());
}

TEST(SessionTextTest, aPathThatIsNoTextComesBackByteForByte)
{
    auto sides = twoSides();
    sides[0].tabs[0].path = "/caf\xe9/\x01\xff";
    EXPECT_EQ(SessionText::sidesFrom(SessionText::encode(sides)), sides);
    Locations const locations{{"web", {.path = "/\xff", .cursor = "\xfe"}}};
    EXPECT_EQ(SessionText::locationsFrom(SessionText::encode(locations)), locations);
}

TEST(SessionTextTest, locationsComeBackInTheirOrder)
{
    Locations const locations{{"web", {.path = "/z", .cursor = "name"}}, {"local", {.path = "/a"}}, {"b", {"/"}}};
    EXPECT_EQ(SessionText::locationsFrom(SessionText::encode(locations)), locations);
}

TEST(SessionTextTest, fieldsThatAreMissingOrUnknownDoNoHarm)
{
    auto const sides = SessionText::sidesFrom(R"([{"tabs":[{"connection":"a","path":"/","new":1}],"active":0},
        {"tabs":[{"connection":"b","path":"/x","sortKey":null,"showHidden":null}],"active":7}])");
    ASSERT_TRUE(sides);
    EXPECT_EQ(sides->at(0).tabs.at(0), (PaneState{.connection = "a", .path = "/"}));
    EXPECT_EQ(sides->at(1).tabs.at(0), (PaneState{.connection = "b", .path = "/x"}));
}

class UnusableSidesTest : public testing::TestWithParam<char const *> {};

TEST_P(UnusableSidesTest, areNone)
{
    EXPECT_FALSE(SessionText::sidesFrom(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(
    , UnusableSidesTest,
    testing::Values(
        "", "[", "{}", "[]", "null", "7", "\xff", R"([{"tabs":[{"connection":"a","path":"/"}],"active":0}])",
        R"([{"tabs":[{"connection":"a","path":"/"}],"active":0},{"tabs":[],"active":0}])",
        R"([{"tabs":[{"connection":"a","path":"/"}],"active":0},{"tabs":[{"path":"/"}],"active":0}])",
        R"([{"tabs":[{"connection":"a","path":5}],"active":0},{"tabs":[{"connection":"a","path":"/"}],"active":0}])",
        R"([{"tabs":7,"active":0},{"tabs":[{"connection":"a","path":"/"}],"active":0}])",
        R"([{"tabs":[{"connection":"a","path":"/"}],"active":"x"},{"tabs":[{"connection":"a","path":"/"}],"active":0}])"));

TEST(SessionTextTest, threeSidesAreNone)
{
    auto text = SessionText::encode(twoSides());
    text.insert(text.size() - 1, R"(,{"tabs":[{"connection":"a","path":"/"}],"active":0})");
    EXPECT_FALSE(SessionText::sidesFrom(text));
}

TEST(SessionTextTest, textsThatAreTooLongAreNotRead)
{
    auto const text = SessionText::encode(twoSides());
    EXPECT_TRUE(SessionText::sidesFrom(text + std::string(SessionText::longestSides - text.size(), ' ')));
    EXPECT_FALSE(SessionText::sidesFrom(text + std::string(SessionText::longestSides - text.size() + 1, ' ')));
    EXPECT_TRUE(SessionText::locationsFrom("{}" + std::string(SessionText::longestLocations - 2, ' ')));
    EXPECT_FALSE(SessionText::locationsFrom("{}" + std::string(SessionText::longestLocations - 1, ' ')));
}

TEST(SessionTextTest, unusableLocationsAreNone)
{
    for (auto const *text : {"", "[]", "{\"web\":7}", "{\"web\":{}}", "{\"web\":{\"path\":1}}", "{\"web\""})
        EXPECT_FALSE(SessionText::locationsFrom(text)) << text;
}

TEST(SessionTextTest, deepNestingIsNoSessionAndDoesNoHarm)
{
    EXPECT_FALSE(SessionText::sidesFrom(std::string(100'000, '[')));
    EXPECT_FALSE(SessionText::sidesFrom(std::string(100'000, '[') + std::string(100'000, ']')));
}

} // namespace
} // namespace tw::test
