#include "Tarnwick/Commands/CommandTable.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>

namespace tw::test {
namespace {

TEST(CommandTableTest, aCommandHasOneRow)
{
    std::set<Command> seen;
    for (auto const &row : commandTable()) {
        EXPECT_TRUE(seen.insert(row.command).second) << row.title;
        EXPECT_EQ(&rowOf(row.command), &row);
    }
}

TEST(CommandTableTest, noTwoCommandsHaveTheSameKey)
{
    std::set<std::string_view> seen;
    for (auto const &row : commandTable()) {
        for (auto const key : {row.keys.main, row.keys.additional})
            EXPECT_TRUE(key.empty() || seen.insert(key).second) << key;
    }
}

/// What GNOME, KDE, Xfce or IBus takes before a program sees it, as they are installed.
std::set<std::string> keysOfDesktops()
{
    std::set<std::string> keys{"F10",        "Alt+Tab",       "Alt+Space",       "Alt+Escape",      "Ctrl+Alt+Up",
                               "Ctrl+Space", "Ctrl+Alt+Down", "Ctrl+Alt+Left",   "Ctrl+Alt+Right",  "Ctrl+Alt+T",
                               "Ctrl+Alt+L", "Ctrl+Alt+Tab",  "Ctrl+Alt+Delete", "Ctrl+Alt+Escape", "Ctrl+Shift+U"};
    for (int number = 1; number <= 12; ++number) {
        keys.insert("Alt+F" + std::to_string(number));
        keys.insert("Ctrl+F" + std::to_string(number));
    }
    return keys;
}

TEST(CommandTableTest, aKeyThatADesktopTakesHasASecondOneThatNoneTakes)
{
    auto const taken = keysOfDesktops();
    for (auto const &row : commandTable()) {
        if (taken.contains(std::string(row.keys.main)))
            EXPECT_FALSE(row.keys.additional.empty()) << row.keys.main;
        EXPECT_FALSE(taken.contains(std::string(row.keys.additional))) << row.keys.additional;
    }
}

TEST(CommandTableTest, whateverHasAKeySaysWhatItDoes)
{
    for (auto const &row : commandTable())
        EXPECT_EQ(row.keys.main.empty(), row.help.empty()) << row.title;
}

TEST(CommandTableTest, whateverCanBeSeenHasATitle)
{
    for (auto const &row : commandTable()) {
        if (row.place.menu != Menu::none || !row.toolTip.empty())
            EXPECT_FALSE(row.title.empty()) << row.help;
    }
}

TEST(CommandTableTest, aFunctionButtonHasAFunctionKey)
{
    for (auto const &row : commandTable()) {
        if (!row.buttonTitle.empty())
            EXPECT_TRUE(row.keys.main.starts_with('F')) << row.buttonTitle;
    }
}

TEST(CommandTableTest, everyMenuStandsInTheMenuBarOrInAnotherMenu)
{
    EXPECT_EQ(titleOf(Menu::none), "");
    for (auto const menu : menuBar) {
        EXPECT_NE(titleOf(menu), "");
        EXPECT_EQ(menuAbove(menu), Menu::none);
    }
    for (auto const menu : submenus) {
        EXPECT_NE(titleOf(menu), "");
        EXPECT_NE(menuAbove(menu), Menu::none);
    }
}

TEST(CommandTableTest, theGroupsOfAMenuFollowOneAnother)
{
    std::map<Menu, int> last;
    for (auto const &row : commandTable()) {
        auto const [menu, group] = row.place;
        EXPECT_GE(group, last[menu]) << row.title << " comes behind a later group";
        last[menu] = group;
    }
}

/// A sign that means something to Markdown stands behind a backslash.
std::string inMarkdown(std::string_view text)
{
    std::string shown;
    for (auto const character : text) {
        if (character == '\\' || character == '|')
            shown += '\\';
        shown += character;
    }
    return shown;
}

/// The keys that a new user needs, as the README has them.
std::string firstKeysInMarkdown()
{
    std::string text = "| Key | What it does |\n|---|---|\n";
    for (auto const &row : commandTable()) {
        if (row.firstSteps == FirstSteps::yes)
            text += "| " + inMarkdown(row.keys.main) + " | " + inMarkdown(row.help) + " |\n";
    }
    return text + "\n";
}

/// All keys, as docs/keys.md has them.
std::string keysInMarkdown()
{
    std::string text = "| Key | Second key | What it does | Menu |\n|---|---|---|---|\n";
    for (auto const &row : commandTable()) {
        if (row.help.empty())
            continue;
        auto const menu = std::string(titleOf(row.place.menu));
        text += "| " + inMarkdown(row.keys.main) + " | " + inMarkdown(row.keys.additional) + " | " +
                inMarkdown(row.help) + " | " + (menu.empty() ? "" : menu + ": " + std::string(row.title)) + " |\n";
    }
    return text + "\n";
}

TEST(CommandTableTest, theReadmeHasTheFirstKeysOfTheTable)
{
    EXPECT_THAT(contentOf(TARNWICK_README), testing::HasSubstr(firstKeysInMarkdown()));
}

TEST(CommandTableTest, theListOfKeysHasThoseOfTheTable)
{
    EXPECT_THAT(contentOf(TARNWICK_KEYS), testing::HasSubstr(keysInMarkdown())) << "The table for docs/keys.md:\n"
                                                                                << keysInMarkdown();
}

} // namespace
} // namespace tw::test
