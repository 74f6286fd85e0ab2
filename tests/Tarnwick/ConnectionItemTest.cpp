#include "Tarnwick/Connections/ConnectionItem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;

using ItemKind = ConnectionItem::Kind;

ConnectionItem separator()
{
    return {.kind = ItemKind::separator};
}

ConnectionItem thisMachine(bool isChecked)
{
    return {.kind = ItemKind::local, .title = "This Mac", .isChecked = isChecked, .isEnabled = true};
}

ConnectionItem host(std::string name, bool isChecked = false)
{
    return {.kind = ItemKind::host, .title = name, .host = name, .isChecked = isChecked, .isEnabled = true};
}

ConnectionItem note(std::string text)
{
    return {.kind = ItemKind::note, .title = std::move(text), .isChecked = false, .isEnabled = false};
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
    EXPECT_EQ(items.front(), (ConnectionItem{.kind = ItemKind::header, .title = "web"}));
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
                            ConnectionItem{.kind = ItemKind::host, .title = "local", .host = "local"}));
}

TEST(ConnectionItemTest, namesAreTheBytesOfTheFile)
{
    EXPECT_THAT(connectionMenuItems({}, Hosts{"a&b\xff\n"}, "local"),
                ElementsAre(thisMachine(true), separator(), host("a&b\xff\n")));
}

Hosts many(std::size_t count)
{
    Hosts hosts;
    for (std::size_t number = 0; number < count; ++number)
        hosts.push_back("host" + std::to_string(number));
    return hosts;
}

/// The names of the hosts, and what stands in their place.
std::vector<std::string> titles(std::vector<ConnectionItem> const &items)
{
    std::vector<std::string> all;
    for (auto const &item : items) {
        if (item.kind == ItemKind::host || item.kind == ItemKind::note)
            all.push_back(item.title.english());
    }
    return all;
}

TEST(ConnectionItemTest, moreHostsThanAPersonLooksThroughAreCounted)
{
    auto const exactly = shownItems(connectionMenuItems({}, many(mostHostsInMenu), "local"), "");
    EXPECT_EQ(exactly.size(), 2 + mostHostsInMenu);
    EXPECT_EQ(exactly.back(), host("host999"));
    auto const more = shownItems(connectionMenuItems({}, many(mostHostsInMenu + 234), "local"), "");
    EXPECT_EQ(more.size(), 2 + mostHostsInMenu + 1);
    EXPECT_EQ(more.back(), note("234 more hosts in ~/.ssh/config"));
}

TEST(ConnectionItemTest, aFewHostsNeedNoFilterAndKeepTheirOrder)
{
    auto const items = lastUsedFirst(connectionMenuItems({}, many(mostHostsAtAGlance), "local"), {"host3"});
    EXPECT_FALSE(hasFilter(items));
    EXPECT_EQ(titles(items), many(mostHostsAtAGlance));
}

TEST(ConnectionItemTest, ofManyHostsTheLastUsedStandFirst)
{
    auto const items =
        lastUsedFirst(connectionMenuItems({}, many(mostHostsAtAGlance + 1), "local"), {"host3", "gone", "host1"});
    EXPECT_TRUE(hasFilter(items));
    auto const names = titles(items);
    EXPECT_THAT((Hosts{names.begin(), names.begin() + 5}), ElementsAre("host3", "host1", "host0", "host2", "host4"));
    EXPECT_EQ(names.size(), mostHostsAtAGlance + 1);
}

TEST(ConnectionItemTest, aFilterFindsItsLettersAnywhereInANameInEitherCase)
{
    auto const items = connectionMenuItems("web", Hosts{"web-one", "mail", "WEBTWO", "cobweb"}, "web");
    EXPECT_THAT(titles(shownItems(items, "wEb")), ElementsAre("web-one", "WEBTWO", "cobweb"));
    EXPECT_EQ(shownItems(items, "wEb").front().kind, ItemKind::header);
    EXPECT_THAT(shownItems(items, "this m"), ElementsAre(items[0], thisMachine(false)));
    EXPECT_EQ(shownItems(items, ""), items);
}

TEST(ConnectionItemTest, aFilterThatFindsNothingSaysSo)
{
    EXPECT_THAT(titles(shownItems(connectionMenuItems({}, Hosts{"web"}, "local"), "x")),
                ElementsAre("No host has these letters"));
}

TEST(ConnectionItemTest, aFilterLooksBehindTheMostHostsToo)
{
    EXPECT_THAT(titles(shownItems(connectionMenuItems({}, many(2000), "local"), "host1999")), ElementsAre("host1999"));
}

} // namespace
} // namespace tw::test
