#include "Tarnwick/Table/PaneCells.h"

#include "Tarnwick/Format/Fmt.h"
#include "tests/support/Listings.h"

namespace tw::test {

namespace {

class PaneCellsTest : public ::testing::Test {
protected:
    void show(std::string path, std::vector<ListedEntry> const &rows)
    {
        model.setSnapshot(listing(std::move(path), rows));
    }

    std::vector<std::string> cells(int row) const
    {
        std::vector<std::string> texts;
        for (auto const column : paneColumns)
            texts.push_back(paneCellText(model, row, column));
        return texts;
    }

    using Texts = std::vector<std::string>;

    PaneModel model;
};

} // namespace

TEST_F(PaneCellsTest, aFilesNameIsSplitFromItsExtension)
{
    show("/", {file("archive.tar.gz", 1536, 1'700'000'000)});

    EXPECT_EQ(cells(0), (Texts{"archive.tar", "gz", "1.5K", Fmt::date(1'700'000'000), "-rw-r--r--"}));
}

TEST_F(PaneCellsTest, aFoldersNameStaysWhole)
{
    show("/", {directory("conf.d", 4096)});

    EXPECT_EQ(cells(0), (Texts{"conf.d", "", "<DIR>", "", "drwxr-xr-x"}));
}

TEST_F(PaneCellsTest, aLinkSaysThatItIsOne)
{
    show("/", {symlink("current.txt", 3)});

    EXPECT_EQ(cells(0), (Texts{"current", "txt", "<LNK>", "", "lrwxrwxrwx"}));
}

TEST_F(PaneCellsTest, theParentRowLeadsUp)
{
    show("/a", {file("b")});

    EXPECT_EQ(cells(0), (Texts{"..", "", "<UP>", "", ""}));
    EXPECT_EQ(paneCellText(model, 1, PaneColumn::name), "b");
}

TEST_F(PaneCellsTest, aRowOutsideIsEmpty)
{
    show("/a", {file("b")});

    EXPECT_EQ(cells(-1), Texts(5));
    EXPECT_EQ(cells(2), Texts(5));
}

TEST_F(PaneCellsTest, aNameIsRepairedAndStaysOnOneLine)
{
    show("/", {file("two\nlines\x7F.t\x01\xFF")});

    EXPECT_EQ(paneCellText(model, 0, PaneColumn::name), "two\xE2\x90\x8Alines\xE2\x90\xA1");
    EXPECT_EQ(paneCellText(model, 0, PaneColumn::ext), "t\xE2\x90\x81\xEF\xBF\xBD");
}

TEST_F(PaneCellsTest, aMarkThatTurnsTheTextRoundIsSeen)
{
    show("/", {file("d_rtl\xE2\x80\xAEtxt.exe")});

    EXPECT_EQ(paneCellText(model, 0, PaneColumn::name), "d_rtl\xEF\xBF\xBDtxt");
    EXPECT_EQ(paneCellText(model, 0, PaneColumn::ext), "exe");
    EXPECT_EQ(model.name(0), "d_rtl\xE2\x80\xAEtxt.exe");
}

TEST_F(PaneCellsTest, everyColumnHasItsIdentifierAndSortKey)
{
    std::vector<std::string_view> identifiers;
    std::vector<std::optional<SortKey>> keys;
    for (auto const column : paneColumns) {
        identifiers.push_back(paneColumnIdentifier(column));
        keys.push_back(sortKeyOf(column));
    }

    EXPECT_EQ(identifiers, (std::vector<std::string_view>{"name", "ext", "size", "date", "attr"}));
    EXPECT_EQ(keys, (std::vector<std::optional<SortKey>>{SortKey::name, SortKey::ext, SortKey::size, SortKey::date,
                                                         std::nullopt}));
}

} // namespace tw::test
