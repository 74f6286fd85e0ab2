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

struct LearntKey {
    std::string_view key;
    std::string_view menu;
    std::string_view title;
};

/// The keys of the menus as people have learnt them. A command that is still to come finds its key free.
constexpr LearntKey learntKeys[] = {
    {"Ctrl+Q", "Tarnwick", "Quit Tarnwick"},
    {"Ctrl+T", "File", "New Tab"},
    {"Ctrl+W", "File", "Close Tab"},
    {"Ctrl+R", "File", "Refresh"},
    {"Ctrl+Shift+=", "File", "Target = Source"},
    {"Ctrl++", "View", "Bigger Text"},
    {"Ctrl+-", "View", "Smaller Text"},
    {"Ctrl+0", "View", "Actual Size"},
    {"Ctrl+[", "View", "Back"},
    {"Alt+Left", "View", "Back"},
    {"Ctrl+]", "View", "Forward"},
    {"Alt+Right", "View", "Forward"},
    {"Ctrl+Alt+R", "View", "Auto Refresh"},
    {"Ctrl+Shift+.", "View", "Show Hidden Files"},
    {"Tab", "View", "Other Pane"},
    {"Ctrl+\\", "View", "Equalize Panes"},
    {"Ctrl+Tab", "View", "Next Tab"},
    {"Ctrl+1", "View", "Tab 1"},
    {"Ctrl+2", "", "Tab 2"},
    {"Ctrl+3", "", "Tab 3"},
    {"Ctrl+4", "", "Tab 4"},
    {"Ctrl+5", "", "Tab 5"},
    {"Ctrl+6", "", "Tab 6"},
    {"Ctrl+7", "", "Tab 7"},
    {"Ctrl+8", "", "Tab 8"},
    {"Ctrl+9", "", "Tab 9"},
    {"Ctrl+F3", "Sort By", "Name"},
    {"Ctrl+F4", "Sort By", "Extension"},
    {"Ctrl+F5", "Sort By", "Date"},
    {"Ctrl+F6", "Sort By", "Size"},
    {"Ctrl+X", "Edit", "Cut"},
    {"Ctrl+C", "Edit", "Copy"},
    {"Ctrl+V", "Edit", "Paste"},
    {"Ctrl+A", "Mark", "Select All"},
    {"Ctrl+Shift+A", "Mark", "Unselect All"},
    {"Ctrl+K", "Hosts", "Connect…"},
    {"Ctrl+Shift+K", "Hosts", "Edit Hosts…"},
    {"Ctrl+Shift+S", "Hosts", "Send To Hosts…"},
    {"Ctrl+Shift+R", "Hosts", "Run Command on Hosts…"},
    {"Ctrl+Shift+L", "Hosts", "Panes Follow Each Other"},
    {"F2", "Commands", "Rename"},
    {"F3", "Commands", "View"},
    {"F4", "Commands", "Edit"},
    {"F5", "Commands", "Copy"},
    {"F6", "Commands", "Move"},
    {"F7", "Commands", "New Folder"},
    {"F8", "Commands", "Delete"},
    {"Ctrl+Y", "Commands", "Preview"},
    {"Ctrl+Shift+U", "Commands", "Compare Folders"},
    {"Ctrl+Shift+D", "Commands", "Compare Files…"},
    {"Alt+F7", "Commands", "Search…"},
    {"Ctrl+F", "Commands", "Search in This Folder…"},
    {"Alt+F5", "Commands", "Pack…"},
    {"Alt+F9", "Commands", "Unpack"},
    {"Ctrl+,", "Commands", "Weather & Settings…"},
    {"Ctrl+M", "Window", "Minimize"},
};

TEST(CommandTableTest, everyCommandHasTheKeyThatPeopleHaveLearnt)
{
    for (auto const &[key, menu, title] : learntKeys) {
        for (auto const &row : commandTable()) {
            auto const hasKey = row.keys.main == key || row.keys.additional == key;
            auto const isCommand = row.title == title && titleOf(row.place.menu) == menu;
            EXPECT_EQ(hasKey, isCommand) << key << " of " << title << " is with " << row.title;
        }
    }
}

TEST(CommandTableTest, theListOfAPanesKeysIsWhole)
{
    std::string words;
    for (auto const &row : commandTable()) {
        if (row.keys.owner == KeyOwner::pane)
            words += std::string(row.keys.main) + ", ";
    }
    for (std::string const key :
         {"Up", "Down", "Home", "End", "Page Up", "Page Down", "Return", "Backspace", "Tab", "Insert", "Shift+Space",
          "Escape", "Letters, digits, signs", "+ of the keypad", "- of the keypad", "* of the keypad"})
        EXPECT_THAT(words, testing::HasSubstr(key + ", "));
    EXPECT_THAT(rowOf(Command::moveCursor).help, testing::HasSubstr("Shift"));
    EXPECT_THAT(rowOf(Command::deleteFiles).help, testing::HasSubstr("Delete and Ctrl+Backspace"));
}

/// What GNOME, KDE, Xfce or IBus takes before a program sees it, as they are installed.
std::set<std::string> keysOfDesktops()
{
    std::set<std::string> keys{"Alt+Tab",       "Alt+Space",       "Alt+Escape",      "Ctrl+Alt+Up", "Ctrl+Space",
                               "Ctrl+Alt+Down", "Ctrl+Alt+Left",   "Ctrl+Alt+Right",  "Ctrl+Alt+T",  "Ctrl+Alt+L",
                               "Ctrl+Alt+Tab",  "Ctrl+Alt+Delete", "Ctrl+Alt+Escape", "Ctrl+Shift+U"};
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
