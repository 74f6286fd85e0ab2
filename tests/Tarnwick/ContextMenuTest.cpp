#include "Tarnwick/Commands/ContextMenu.h"

#include "Tarnwick/Commands/CommandTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using Row = ContextSubject::Row;

/// What can be read in the menu; a submenu as "Copy/Name", a separator as "-".
std::vector<std::string> titlesFor(ContextSubject const &subject)
{
    std::vector<std::string> all;
    for (auto const &item : contextMenuItems(subject)) {
        std::string_view const title = item.kind == ContextItem::Kind::separator ? "-"
                                       : item.title.empty()                      ? rowOf(item.command).title
                                                                                 : item.title;
        auto const isInside = item.kind == ContextItem::Kind::inCopyMenu;
        all.push_back((isInside ? std::string(copyMenuTitle) + "/" : std::string()) + std::string(title));
    }
    return all;
}

TEST(ContextMenuTest, aFolderCanBeOpenedAndItsPathCopied)
{
    EXPECT_THAT(titlesFor({.row = Row::folder}),
                ElementsAre("Open Folder", "-", "Cut", "Copy to Clipboard", "Copy to Other Pane…",
                            "Move to Other Pane…", "Rename…", "Pack…", "Copy/Name", "Copy/Name Without Extension",
                            "Copy/Full Path", "Copy/Relative to Other Pane", "Copy/Relative to Home",
                            "Copy/Enclosing Folder", "Delete…", "-", "Paste", "New Folder…", "Refresh",
                            "Show Hidden Files"));
}

TEST(ContextMenuTest, aFileOfAHostHasAHostAndNoHomeHere)
{
    EXPECT_THAT(titlesFor({.row = Row::file, .isLocal = false}),
                ElementsAre("Open", "Open With", "View", "-", "Cut", "Copy to Clipboard", "Copy to Other Pane…",
                            "Move to Other Pane…", "Rename…", "Pack…", "Unpack", "Copy/Name",
                            "Copy/Name Without Extension", "Copy/Full Path", "Copy/Host and Path",
                            "Copy/Relative to Other Pane", "Copy/Enclosing Folder", "Delete…", "-", "Paste",
                            "New Folder…", "Refresh", "Show Hidden Files"));
}

TEST(ContextMenuTest, whatIsDeletedAreTheMarkedFiles)
{
    EXPECT_THAT(titlesFor({.row = Row::file, .marked = 3}), ::testing::Contains("Delete 3 Marked…"));
}

TEST(ContextMenuTest, besideTheFilesItIsAboutTheFolderOnShow)
{
    EXPECT_THAT(titlesFor({}), ElementsAre("Paste", "New Folder…", "Refresh", "Show Hidden Files"));
}

} // namespace
} // namespace tw::test
