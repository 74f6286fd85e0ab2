#include "Tarnwick/Table/PaneModel.h"

#include "tests/support/Listings.h"

#include <limits>

namespace tw::test {

namespace {

class PaneModelTest : public ::testing::Test {
protected:
    using Names = std::vector<std::string>;
    using Marks = PaneModel::Marks;

    void show(std::string path, std::vector<ListedEntry> const &rows)
    {
        model.setSnapshot(listing(std::move(path), rows));
    }

    /// ".." and the rows "a", "b" and "c".
    void showThree() { show("/x", {file("b"), file("a"), file("c")}); }

    void mark(Names const &names)
    {
        for (auto const &name : names)
            model.toggleMark(model.rowForName(name).value_or(-1));
    }

    void sort(SortKey key, bool ascending = true)
    {
        model.setViewOptions({.sortKey = key, .ascending = ascending, .showHidden = false});
    }

    void showHidden(bool hidden)
    {
        auto options = model.viewOptions();
        options.showHidden = hidden;
        model.setViewOptions(options);
    }

    PaneModel model;
};

} // namespace

TEST_F(PaneModelTest, withoutAListingThereIsNothing)
{
    EXPECT_FALSE(model.snapshot());
    EXPECT_FALSE(model.hasParentRow());
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_EQ(model.entryIndex(0), std::nullopt);
    EXPECT_EQ(model.entry(0), nullptr);
    EXPECT_EQ(model.name(0), "");
    EXPECT_EQ(model.rowForName("a"), std::nullopt);
    EXPECT_EQ(model.parentPath(), std::nullopt);
    EXPECT_EQ(model.totals(), PaneModel::Totals());
    EXPECT_EQ(model.visibleNames(), Names());
    model.markRange(0, 10, Marks::insert);
    model.markAll(Marks::insert);
    model.invertMarks();
    EXPECT_EQ(model.markMatching("*", Marks::insert), 0);
    EXPECT_EQ(model.markedNames(), Names());
    EXPECT_EQ(model.operands(0), Names());
}

TEST_F(PaneModelTest, theParentRowIsFirstOutsideTheRoot)
{
    showThree();

    EXPECT_TRUE(model.hasParentRow());
    EXPECT_EQ(model.rowCount(), 4);
    EXPECT_EQ(model.entryIndex(0), std::nullopt);
    EXPECT_EQ(model.entry(0), nullptr);
    EXPECT_EQ(model.name(0), "");
    EXPECT_EQ(model.entryIndex(1), 1U);
    EXPECT_EQ(model.name(1), "a");
    EXPECT_EQ(model.name(3), "c");
}

TEST_F(PaneModelTest, theRootHasNoParentRowOutsideAnArchive)
{
    show("/", {file("b"), file("a")});

    EXPECT_FALSE(model.hasParentRow());
    EXPECT_EQ(model.rowCount(), 2);
    EXPECT_EQ(model.name(0), "a");

    model.setAlwaysShowParentRow(true);
    EXPECT_TRUE(model.hasParentRow());
    EXPECT_EQ(model.rowCount(), 3);
    EXPECT_EQ(model.name(0), "");
    EXPECT_EQ(model.name(1), "a");
}

TEST_F(PaneModelTest, withoutAListingTheParentRowIsThatOfAnArchivesRoot)
{
    model.setAlwaysShowParentRow(true);

    EXPECT_TRUE(model.hasParentRow());
    EXPECT_EQ(model.rowCount(), 1);
    EXPECT_EQ(model.entryIndex(0), std::nullopt);
}

TEST_F(PaneModelTest, rowsOutsideAreNothing)
{
    showThree();
    for (int const row : {-1, 4, 1000, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_EQ(model.entryIndex(row), std::nullopt) << row;
        EXPECT_EQ(model.entry(row), nullptr) << row;
        EXPECT_EQ(model.name(row), "") << row;
        EXPECT_FALSE(model.isMarked(row)) << row;
    }
}

TEST_F(PaneModelTest, aRowIsFoundByTheExactBytesOfItsName)
{
    show("/x", {file("bad\xFE"), file("bad\xFF"), file("good")});

    EXPECT_EQ(model.rowForName("bad\xFE"), 1);
    EXPECT_EQ(model.rowForName("bad\xFF"), 2);
    EXPECT_EQ(model.rowForName("good"), 3);
    EXPECT_EQ(model.rowForName("bad\xEF\xBF\xBD"), std::nullopt);
    EXPECT_EQ(model.rowForName(""), std::nullopt);
}

TEST_F(PaneModelTest, hiddenEntriesAreThoseThatBeginWithADot)
{
    show("/", {file(".hidden"), file("shown"), directory(".config"), file("not.hidden")});
    EXPECT_EQ(model.visibleNames(), (Names{"not.hidden", "shown"}));

    showHidden(true);
    EXPECT_EQ(model.visibleNames(), (Names{".config", ".hidden", "not.hidden", "shown"}));
}

TEST_F(PaneModelTest, aHiddenRowHasNoRow)
{
    show("/", {file(".hidden"), file("shown")});

    EXPECT_EQ(model.rowForName(".hidden"), std::nullopt);
}

TEST_F(PaneModelTest, anotherOrderOrFolderPlacementIsTakenUpAtOnce)
{
    show("/", {file("a", 1, 30), file("b", 3, 10), directory("d", 2, 20)});
    EXPECT_EQ(model.visibleNames(), (Names{"d", "a", "b"}));

    sort(SortKey::name, false);
    EXPECT_EQ(model.visibleNames(), (Names{"d", "b", "a"}));

    model.setFolderPlacement(FolderPlacement::mixed);
    EXPECT_EQ(model.visibleNames(), (Names{"d", "b", "a"}));
    sort(SortKey::size, false);
    EXPECT_EQ(model.visibleNames(), (Names{"b", "d", "a"}));

    sort(SortKey::date);
    EXPECT_EQ(model.visibleNames(), (Names{"b", "d", "a"}));
    model.setFolderPlacement(FolderPlacement::bottom);
    EXPECT_EQ(model.visibleNames(), (Names{"b", "a", "d"}));
}

TEST_F(PaneModelTest, everyListingGetsItsOwnCollation)
{
    show("/", {file("cafz"), file("cafe\xCC\x81"), file("caf\xC3\xA9")});
    EXPECT_EQ(model.visibleNames(), (Names{"cafz", "cafe\xCC\x81", "caf\xC3\xA9"}));

    show("/", {file("b"), file("a")});
    EXPECT_EQ(model.visibleNames(), (Names{"a", "b"}));
}

TEST_F(PaneModelTest, aMarkTogglesOnEntriesOnly)
{
    showThree();
    model.toggleMark(1);
    model.toggleMark(3);
    model.toggleMark(0);
    model.toggleMark(-1);
    model.toggleMark(4);
    EXPECT_EQ(model.markedNames(), (Names{"a", "c"}));
    EXPECT_TRUE(model.isMarked(1));
    EXPECT_FALSE(model.isMarked(2));
    EXPECT_FALSE(model.isMarked(0));

    model.toggleMark(1);
    EXPECT_EQ(model.markedNames(), (Names{"c"}));
}

TEST_F(PaneModelTest, aRangeOfMarksGoesInEitherDirectionAndLeavesOutTheParentRow)
{
    showThree();
    model.markRange(0, 2, Marks::insert);
    EXPECT_EQ(model.markedNames(), (Names{"a", "b"}));
    model.markRange(3, 2, Marks::insert);
    EXPECT_EQ(model.markedNames(), (Names{"a", "b", "c"}));
    model.markRange(1, 2, Marks::remove);
    EXPECT_EQ(model.markedNames(), (Names{"c"}));
}

TEST_F(PaneModelTest, aRangeOfMarksIsClampedToTheTable)
{
    showThree();
    model.markRange(-5, 1, Marks::insert);
    EXPECT_EQ(model.markedNames(), (Names{"a"}));
    model.markRange(3, 100, Marks::insert);
    EXPECT_EQ(model.markedNames(), (Names{"a", "c"}));
    model.markRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), Marks::remove);
    EXPECT_EQ(model.markedNames(), Names());
}

TEST_F(PaneModelTest, allVisibleEntriesAreMarkedOrNone)
{
    show("/x", {file("a"), file(".hidden"), directory("d")});
    model.markAll(Marks::insert);
    EXPECT_EQ(model.markedNames(), (Names{"d", "a"}));
    showHidden(true);
    EXPECT_EQ(model.markedNames(), (Names{"d", "a"}));

    model.markAll(Marks::remove);
    EXPECT_EQ(model.markedNames(), Names());
    EXPECT_TRUE(model.isUnmarked());
}

TEST_F(PaneModelTest, invertedMarksAreOfVisibleEntriesOnly)
{
    showHidden(true);
    show("/x", {file("a"), file("b"), file("goes"), file(".hidden")});
    mark({"a", "goes", ".hidden"});
    show("/x", {file("a"), file("b"), file(".hidden")});
    showHidden(false);
    model.invertMarks();
    EXPECT_EQ(model.markedNames(), (Names{"b"}));

    showHidden(true);
    show("/x", {file("a"), file("b"), file("goes"), file(".hidden")});
    EXPECT_EQ(model.markedNames(), (Names{"b"})) << "the marks on what was not on show are gone";
}

TEST_F(PaneModelTest, aMaskMarksWhatItMatches)
{
    show("/x", {file("a.txt"), file("b.md"), file("c.txt.md"), file("plain"), directory("d.txt")});

    EXPECT_EQ(model.markMatching("*.txt;*.md", Marks::insert), 4);
    EXPECT_EQ(model.markedNames(), (Names{"d.txt", "a.txt", "b.md", "c.txt.md"}));
    EXPECT_EQ(model.markMatching("a* c*", Marks::remove), 2);
    EXPECT_EQ(model.markedNames(), (Names{"d.txt", "b.md"}));
}

TEST_F(PaneModelTest, aNameThatTwoPatternsMatchCountsOnce)
{
    show("/x", {file("a.txt")});

    EXPECT_EQ(model.markMatching("*.txt a* *", Marks::insert), 1);
}

TEST_F(PaneModelTest, aMaskCountsWhatItMatchesWhetherMarkedBeforeOrNot)
{
    show("/x", {file("a"), file("b")});
    mark({"a"});

    EXPECT_EQ(model.markMatching("*", Marks::insert), 2);
    model.markAll(Marks::remove);
    EXPECT_EQ(model.markMatching("*", Marks::remove), 2);
}

TEST_F(PaneModelTest, aMaskWithADotMatchesOnlyNamesWithOne)
{
    show("/x", {file("a.txt"), file("plain"), file("b.")});

    EXPECT_EQ(model.markMatching("*.*", Marks::insert), 2);
    EXPECT_EQ(model.markedNames(), (Names{"a.txt", "b."}));
}

TEST_F(PaneModelTest, aMaskIsCaseSensitiveAndAStarMatchesALeadingDot)
{
    showHidden(true);
    show("/x", {file(".profile"), file("PROFILE")});

    EXPECT_EQ(model.markMatching("*profile", Marks::insert), 1);
    EXPECT_EQ(model.markedNames(), (Names{".profile"}));
}

TEST_F(PaneModelTest, anEmptyMaskMatchesNothing)
{
    showThree();

    EXPECT_EQ(model.markMatching("", Marks::insert), 0);
    EXPECT_EQ(model.markMatching(" ;; ", Marks::insert), 0);
    EXPECT_EQ(model.markMatching(";a; ", Marks::insert), 1);
}

TEST_F(PaneModelTest, aMaskMatchesTheVisibleOnly)
{
    show("/x", {file(".hidden"), file("shown")});

    EXPECT_EQ(model.markMatching("*", Marks::insert), 1);
    EXPECT_EQ(model.markedNames(), (Names{"shown"}));
}

TEST_F(PaneModelTest, theParentPathIsTheFolderAbove)
{
    show("/a/b", {});
    EXPECT_EQ(model.parentPath(), "/a");
    show("/a", {});
    EXPECT_EQ(model.parentPath(), "/");
    show("/", {});
    EXPECT_EQ(model.parentPath(), std::nullopt);
}

TEST_F(PaneModelTest, operandsAreTheMarksElseTheRowUnderTheCursor)
{
    showThree();
    EXPECT_EQ(model.operands(2), (Names{"b"}));
    mark({"c", "a"});
    EXPECT_EQ(model.operands(2), (Names{"a", "c"}));
    EXPECT_EQ(model.operands(std::nullopt), (Names{"a", "c"}));
}

TEST_F(PaneModelTest, thereAreNoOperandsOnTheParentRowOrWithoutACursor)
{
    showThree();

    EXPECT_EQ(model.operands(0), Names());
    EXPECT_EQ(model.operands(std::nullopt), Names());
    EXPECT_EQ(model.operands(99), Names());
}

TEST_F(PaneModelTest, totalsAreOfTheVisibleAndCountTheBytesOfFilesOnly)
{
    show("/", {file("a", 10), file("b", 20), directory("d", 4096), symlink("l", 3), file(".hidden", 1000)});

    EXPECT_EQ(model.totals(), (PaneModel::Totals{.files = 3, .dirs = 1, .bytes = 33}));
}

TEST_F(PaneModelTest, totalsOfSizesBeyondAllMeasureStayAtTheLargest)
{
    auto const largest = std::numeric_limits<std::int64_t>::max();
    show("/", {file("a", largest), file("b", 1)});
    model.markAll(Marks::insert);

    EXPECT_EQ(model.totals().bytes, largest);
    EXPECT_EQ(model.markedSummary().bytes, largest);
}

TEST_F(PaneModelTest, theMarkedSummaryCountsWhatIsVisibleAndMarked)
{
    show("/", {file("a", 10), file("b", 20), directory("d", 4096), file(".hidden", 1000)});
    EXPECT_EQ(model.markedSummary(), PaneModel::MarkedSummary());

    showHidden(true);
    mark({"a", "d", ".hidden"});
    EXPECT_EQ(model.markedSummary(), (PaneModel::MarkedSummary{.count = 3, .bytes = 1010}));
    showHidden(false);
    EXPECT_EQ(model.markedSummary(), (PaneModel::MarkedSummary{.count = 2, .bytes = 10}));
    mark({"a"});
    EXPECT_EQ(model.markedSummary(), (PaneModel::MarkedSummary{.count = 1, .bytes = 0}));
}

TEST_F(PaneModelTest, theMarkedSummaryIsExactAgainAfterSizesBeyondAllMeasure)
{
    auto const largest = std::numeric_limits<std::int64_t>::max();
    show("/", {file("a", largest), file("b", largest), file("c", 7)});
    model.markAll(Marks::insert);
    mark({"a", "b"});

    EXPECT_EQ(model.markedSummary(), (PaneModel::MarkedSummary{.count = 1, .bytes = 7}));
}

TEST_F(PaneModelTest, marksSurviveARefreshAndWhatWentIsNotCounted)
{
    show("/x", {file("goes", 2), file("stays", 1)});
    model.markAll(Marks::insert);
    show("/x", {file("new", 4), file("stays", 1)});

    EXPECT_EQ(model.markedNames(), (Names{"stays"}));
    EXPECT_EQ(model.markedSummary(), (PaneModel::MarkedSummary{.count = 1, .bytes = 1}));
    EXPECT_FALSE(model.isMarked(*model.rowForName("new")));
}

TEST_F(PaneModelTest, aMarkOnANameThatWentComesBackWithTheName)
{
    show("/x", {file("goes", 2), file("stays", 1)});
    model.markAll(Marks::insert);
    show("/x", {file("stays", 1)});
    EXPECT_FALSE(model.isUnmarked());
    show("/x", {file("goes", 2), file("stays", 1)});
    EXPECT_EQ(model.markedNames(), (Names{"goes", "stays"}));

    show("/x", {file("stays", 1)});
    model.unmarkWhatIsNotOnShow();
    show("/x", {file("goes", 2), file("stays", 1)});
    EXPECT_EQ(model.markedNames(), (Names{"stays"}));
}

TEST_F(PaneModelTest, operandsAreNeverWhatIsNotOnShow)
{
    show("/x", {file("goes"), file("stays")});
    mark({"goes"});
    show("/x", {file("stays")});
    EXPECT_EQ(model.operands(1), (Names{"stays"})) << "the only mark is on a name that went";

    showHidden(true);
    show("/x", {file(".hidden"), file("stays")});
    mark({".hidden"});
    showHidden(false);
    EXPECT_EQ(model.operands(1), (Names{"stays"}));
}

TEST_F(PaneModelTest, namesThatLookAlikeAreMarkedApart)
{
    show("/", {file("bad\xFE"), file("bad\xFF")});
    model.toggleMark(0);

    EXPECT_EQ(model.operands(1), (Names{"bad\xFE"}));
    EXPECT_FALSE(model.isMarked(1));
}

TEST_F(PaneModelTest, everySortKeyHasItsStoredText)
{
    std::pair<SortKey, std::string_view> const table[] = {
        {SortKey::name, "name"}, {SortKey::ext, "ext"}, {SortKey::size, "size"}, {SortKey::date, "date"}};
    for (auto const &[key, text] : table) {
        EXPECT_EQ(sortKeyText(key), text);
        EXPECT_EQ(sortKeyFromText(text), key);
    }
    EXPECT_EQ(sortKeyFromText(""), std::nullopt);
    EXPECT_EQ(sortKeyFromText("Name"), std::nullopt);
}

TEST_F(PaneModelTest, foldedNamesOfAnotherListingAreNotTaken)
{
    auto const older = listing("/", {file("A")});
    auto const newer = listing("/", {file("a"), file("B")});
    model.setSnapshot(newer);
    model.takeFoldedNames(older, FoldedNames(older));
    EXPECT_FALSE(model.hasFoldedNames());
    model.takeFoldedNames(newer, FoldedNames(newer));
    EXPECT_TRUE(model.hasFoldedNames());
    EXPECT_EQ(model.findRow("b", 0), 1);
}

TEST(PaneModelDeathTest, anEntryWithoutANameStopsTheProcess)
{
    PaneModel model;

    EXPECT_DEATH(model.setSnapshot(listing("/", {file("")})), "without a name");
}

} // namespace tw::test
