#include "Tarnwick/Connections/ConnectionItem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;

using Kind = ConnectionItem::Kind;

ConnectionItem separator()
{
    return {.kind = Kind::separator};
}

ConnectionItem thisMachine(bool isChecked)
{
    return {.kind = Kind::local, .title = "This Mac", .isChecked = isChecked, .isEnabled = true};
}

ConnectionItem host(std::string name, bool isChecked = false)
{
    return {.kind = Kind::host, .title = name, .host = name, .isChecked = isChecked, .isEnabled = true};
}

ConnectionItem note(std::string text)
{
    return {.kind = Kind::note, .title = std::move(text), .isChecked = false, .isEnabled = false};
}

using Hosts = std::vector<std::string>;

TEST(ConnectionItemTest, thisMachineStandsBeforeTheHostsInTheirOrder)
{
    EXPECT_THAT(connectionMenuItems({}, Hosts{"web", "Mail", "alpha"}, "local"),
                ElementsAre(thisMachine(true), separator(), host("web"), host("Mail"), host("alpha")));
}

TEST(ConnectionItemTest, theConnectionOfThePaneIsChecked)
{
    EXPECT_THAT(connectionMenuItems({}, Hosts{"web", "mail"}, "mail"),
                ElementsAre(thisMachine(false), separator(), host("web"), host("mail", true)));
}

TEST(ConnectionItemTest, aConnectionThatIsNotSavedIsCheckedNowhere)
{
    EXPECT_THAT(connectionMenuItems({}, Hosts{"web"}, "web.example"),
                ElementsAre(thisMachine(false), separator(), host("web")));
}

TEST(ConnectionItemTest, aHeaderStandsFirstAndCannotBeChosen)
{
    auto const items = connectionMenuItems("web", Hosts{"web"}, "web");
    EXPECT_EQ(items.front(), (ConnectionItem{.kind = Kind::header, .title = "web"}));
    EXPECT_FALSE(items.front().isEnabled);
    EXPECT_EQ(items.size(), connectionMenuItems({}, Hosts{"web"}, "web").size() + 1);
}

TEST(ConnectionItemTest, withoutHostsItSaysSo)
{
    EXPECT_THAT(connectionMenuItems({}, Hosts{}, "local"),
                ElementsAre(thisMachine(true), separator(), note("No hosts in ~/.ssh/config")));
}

TEST(ConnectionItemTest, hostsThatAreNotKnownYetAreNotSaidToBeNone)
{
    EXPECT_THAT(connectionMenuItems({}, {}, "local"),
                ElementsAre(thisMachine(true), separator(), note("reading ~/.ssh/config…")));
}

TEST(ConnectionItemTest, aHostByTheNameOfThisMachineIsShownButCannotBeChosen)
{
    EXPECT_THAT(connectionMenuItems({}, Hosts{"local"}, "local"),
                ElementsAre(thisMachine(true), separator(),
                            ConnectionItem{.kind = Kind::host, .title = "local", .host = "local"}));
}

TEST(ConnectionItemTest, namesAreTheBytesOfTheFile)
{
    EXPECT_THAT(connectionMenuItems({}, Hosts{"a&b\xff\n"}, "local"),
                ElementsAre(thisMachine(true), separator(), host("a&b\xff\n")));
}

TEST(ConnectionItemTest, moreHostsThanAPersonLooksThroughAreCounted)
{
    auto const exactly = connectionMenuItems({}, Hosts(mostHostsInMenu, "web"), "local");
    EXPECT_EQ(exactly.size(), 2 + mostHostsInMenu);
    EXPECT_EQ(exactly.back(), host("web"));
    auto const more = connectionMenuItems({}, Hosts(mostHostsInMenu + 234, "web"), "local");
    EXPECT_EQ(more.size(), 2 + mostHostsInMenu + 1);
    EXPECT_EQ(more.back(), note("234 more hosts in ~/.ssh/config"));
}

} // namespace
} // namespace tw::test
