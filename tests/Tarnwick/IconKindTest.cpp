#include "Tarnwick/Table/IconKind.h"

#include "Tarnwick/Format/Fmt.h"
#include "tests/support/Listings.h"

#include <gtest/gtest.h>

#include <set>

namespace tw::test {
namespace {

ListedEntry withMode(ListedEntry entry, std::uint16_t mode)
{
    entry.mode = mode;
    return entry;
}

class IconKindTest : public ::testing::Test {
protected:
    IconKind kindOf(ListedEntry const &entry)
    {
        model.setSnapshot(listing("/folder", {entry}));
        return iconKindOf(paneIconKey(model, 1));
    }

    PaneModel model;
};

TEST_F(IconKindTest, theParentRowHasAnIconOfItsOwn)
{
    model.setSnapshot(listing("/folder", {}));
    EXPECT_EQ(iconKindOf(paneIconKey(model, 0)), IconKind::parent);
}

TEST_F(IconKindTest, whatIsNoFileIsToldByItsKind)
{
    EXPECT_EQ(kindOf(directory("pictures.png")), IconKind::folder);
    EXPECT_EQ(kindOf(symlink("link.png")), IconKind::link);
    EXPECT_EQ(kindOf({.name = "pipe", .kind = EntryKind::fifo}), IconKind::special);
    EXPECT_EQ(kindOf({.name = "socket.png", .kind = EntryKind::socket}), IconKind::special);
}

TEST_F(IconKindTest, aFileIsToldByItsExtensionInAnyCase)
{
    EXPECT_EQ(kindOf(file("notes.txt")), IconKind::text);
    EXPECT_EQ(kindOf(file("main.cpp")), IconKind::code);
    EXPECT_EQ(kindOf(file("PHOTO.JPG")), IconKind::image);
    EXPECT_EQ(kindOf(file("song.flac")), IconKind::audio);
    EXPECT_EQ(kindOf(file("film.mkv")), IconKind::video);
    EXPECT_EQ(kindOf(file("backup.tar.gz")), IconKind::archive);
    EXPECT_EQ(kindOf(file("paper.pdf")), IconKind::document);
    EXPECT_EQ(kindOf(file("budget.xlsx")), IconKind::spreadsheet);
    EXPECT_EQ(kindOf(file("setup.exe")), IconKind::executable);
    EXPECT_EQ(kindOf(file("what.ever")), IconKind::file);
}

TEST_F(IconKindTest, aFileWithoutAnExtensionMayBeAProgram)
{
    EXPECT_EQ(kindOf(withMode(file("ls"), 0755)), IconKind::executable);
    EXPECT_EQ(kindOf(withMode(file("README"), 0644)), IconKind::file);
    EXPECT_EQ(kindOf(withMode(file("photo.png"), 0777)), IconKind::image);
}

TEST_F(IconKindTest, noExtensionIsMistakenForAKey)
{
    EXPECT_EQ(kindOf(file("x.dir")), IconKind::file);
    EXPECT_EQ(kindOf(file("x.parent")), IconKind::file);
    EXPECT_EQ(kindOf(file("x.link")), IconKind::file);
}

TEST_F(IconKindTest, everyKindHasAPictureOfItsOwn)
{
    std::set<std::string_view> names;
    constexpr auto count = static_cast<int>(IconKind::executable) + 1;
    for (int kind = 0; kind < count; ++kind)
        names.insert(iconName(static_cast<IconKind>(kind)));
    EXPECT_EQ(names.size(), static_cast<std::size_t>(count));
}

} // namespace
} // namespace tw::test
