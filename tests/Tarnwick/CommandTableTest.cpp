#include "Tarnwick/Commands/CommandTable.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

TEST(CommandTableTest, whateverHasAKeySaysWhatItDoes)
{
    for (auto const &row : commandTable())
        EXPECT_EQ(row.keys.main.empty(), row.help.empty()) << row.title;
}

TEST(CommandTableTest, whateverCanBeSeenHasATitle)
{
    for (auto const &row : commandTable()) {
        auto const isSeen = row.place.menu != Menu::none || row.contextMenu == ContextMenu::yes || !row.toolTip.empty();
        EXPECT_EQ(isSeen, !row.title.empty()) << row.help;
    }
}

TEST(CommandTableTest, aFunctionButtonHasAFunctionKey)
{
    for (auto const &row : commandTable()) {
        if (!row.buttonTitle.empty())
            EXPECT_TRUE(row.keys.main.starts_with('F')) << row.buttonTitle;
    }
}

TEST(CommandTableTest, everyMenuButNoneHasATitle)
{
    EXPECT_EQ(titleOf(Menu::none), "");
    for (auto const menu : {Menu::application, Menu::file, Menu::view, Menu::hosts, Menu::commands})
        EXPECT_NE(titleOf(menu), "");
}

/// The list of keys as the README has it.
std::string keysInMarkdown()
{
    std::string text = "| Key | What it does |\n|---|---|\n";
    for (auto const &row : commandTable()) {
        if (row.help.empty())
            continue;
        text += "| ";
        for (auto const character : row.keys.main)
            text += character == '\\' ? std::string("\\\\") : std::string(1, character);
        text += " | " + std::string(row.help) + " |\n";
    }
    return text + "\n";
}

TEST(CommandTableTest, theReadmeHasTheKeysOfTheTable)
{
    EXPECT_THAT(contentOf(TARNWICK_README), testing::HasSubstr(keysInMarkdown()));
}

} // namespace
} // namespace tw::test
