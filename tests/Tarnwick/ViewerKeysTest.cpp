#include "Tarnwick/Viewer/ViewerKeys.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace tw::test {
namespace {

KeyStroke viewerStroke(std::string sign)
{
    return {.sign = std::move(sign)};
}

TEST(ViewerKeysTest, aKeyDoesOneThing)
{
    std::set<std::string> seen;
    for (auto const &key : viewerKeys()) {
        std::string chord;
        for (auto const sign : std::string(key.chords) + " ") {
            if (sign != ' ')
                chord += sign;
            else
                EXPECT_TRUE(seen.insert(std::exchange(chord, {})).second) << key.chords;
        }
    }
}

TEST(ViewerKeysTest, aSignCountsWhateverTheLayoutTypesItWith)
{
    EXPECT_EQ(viewerActionOf(viewerStroke("PgDown")), ViewerAction::pageDown);
    EXPECT_EQ(viewerActionOf(viewerStroke("Enter")), ViewerAction::lineDown);
    EXPECT_EQ(viewerActionOf(viewerStroke(":")), ViewerAction::goTo);
    EXPECT_EQ(viewerActionOf({.sign = ":", .shift = true}), ViewerAction::goTo);
    EXPECT_EQ(viewerActionOf(viewerStroke("G")), ViewerAction::start);
    EXPECT_EQ(viewerActionOf({.sign = "G", .shift = true}), ViewerAction::end);
    EXPECT_EQ(viewerActionOf({.sign = "W", .control = true}), ViewerAction::close);
    EXPECT_EQ(viewerActionOf({.sign = "H", .shift = true}), std::nullopt);
    EXPECT_EQ(viewerActionOf({.sign = "G", .alt = true}), std::nullopt);
}

TEST(ViewerKeysTest, theDocumentHasThem)
{
    std::string table = "| Keys | What they do |\n|---|---|\n";
    for (auto const &key : viewerKeys()) {
        table += "| ";
        for (auto const sign : key.chords)
            table += sign == ' ' ? std::string(", ") : std::string(1, sign);
        table += " | " + std::string(key.help) + " |\n";
    }
    EXPECT_THAT(contentOf(TARNWICK_VIEWER_KEYS), testing::HasSubstr(table)) << "The table for docs/viewer.md:\n"
                                                                            << table;
}

} // namespace
} // namespace tw::test
