#include "Tarnwick/Panes/PaneCursor.h"

#include "tests/support/Listings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A cursor over ".." and the files "1" to "9", each as large as its name says.
class PaneCursorTest : public ::testing::Test {
protected:
    PaneCursorTest()
    {
        show({1, 2, 3, 4, 5, 6, 7, 8, 9});
        cursor.restore({});
    }

    void show(std::vector<int> const &numbers)
    {
        std::vector<ListedEntry> files;
        for (auto const number : numbers)
            files.push_back(file(std::to_string(number), number));
        rows.setSnapshot(listing("/x", files));
    }

    std::vector<std::string> marked() const { return rows.markedNames(); }

    PaneModel rows;
    PaneCursor cursor{rows};
};

TEST_F(PaneCursorTest, aKeyLeadsNowhereInAnEmptyTable)
{
    PaneModel none;
    PaneCursor empty(none);
    empty.restore("x");
    EXPECT_EQ(empty.row(), std::nullopt);
    EXPECT_EQ(empty.name(), "");
    EXPECT_EQ(empty.target(Key::down, 10), std::nullopt);
    empty.markUpTo(0);
    empty.moveTo(0);
    EXPECT_EQ(empty.row(), std::nullopt);
}

TEST_F(PaneCursorTest, theTargetOfAKeyStaysInTheTable)
{
    cursor.moveTo(5);
    EXPECT_EQ(cursor.target(Key::up, 4), 4);
    EXPECT_EQ(cursor.target(Key::down, 4), 6);
    EXPECT_EQ(cursor.target(Key::pageUp, 4), 2) << "a page less one row";
    EXPECT_EQ(cursor.target(Key::pageDown, 4), 8);
    EXPECT_EQ(cursor.target(Key::pageDown, 100), 9);
    EXPECT_EQ(cursor.target(Key::pageUp, 0), 4) << "a page is at least one row";
    EXPECT_EQ(cursor.target(Key::home, 4), 0);
    EXPECT_EQ(cursor.target(Key::end, 4), 9);
    EXPECT_EQ(cursor.target(Key::enter, 4), std::nullopt);
}

TEST_F(PaneCursorTest, aRowOutsideOfTheTableChangesNothing)
{
    cursor.moveTo(5);
    for (int const row : {-1, 10}) {
        cursor.moveTo(row);
        cursor.toggleMark(row);
        cursor.markUpTo(row);
    }
    EXPECT_EQ(cursor.row(), 5);
    EXPECT_THAT(marked(), IsEmpty());
}

TEST_F(PaneCursorTest, itIsRestoredToANameOrToTheTop)
{
    cursor.restore("4");
    EXPECT_EQ(cursor.name(), "4");
    cursor.restore("gone");
    EXPECT_EQ(cursor.row(), 0);
    EXPECT_EQ(cursor.name(), "");
}

TEST_F(PaneCursorTest, aRangeGrowsShrinksAndTurnsRoundItsAnchor)
{
    cursor.moveTo(5);
    cursor.markUpTo(7);
    EXPECT_THAT(marked(), ElementsAre("5", "6", "7"));
    cursor.markUpTo(6);
    EXPECT_THAT(marked(), ElementsAre("5", "6"));
    cursor.markUpTo(3);
    EXPECT_THAT(marked(), ElementsAre("3", "4", "5"));
    cursor.markUpTo(4);
    EXPECT_THAT(marked(), ElementsAre("4", "5"));
    cursor.markUpTo(9);
    EXPECT_THAT(marked(), ElementsAre("5", "6", "7", "8", "9"));
    cursor.markUpTo(5);
    EXPECT_THAT(marked(), ElementsAre("5"));
    cursor.markUpTo(0);
    EXPECT_THAT(marked(), ElementsAre("1", "2", "3", "4", "5")) << "the parent row is never marked";
}

TEST_F(PaneCursorTest, aRangeReplacesOtherMarks)
{
    cursor.toggleMark(9);
    cursor.moveTo(2);
    cursor.markUpTo(3);
    EXPECT_THAT(marked(), ElementsAre("2", "3"));
}

TEST_F(PaneCursorTest, aRangeIsAddedWhereOtherMarksAreKept)
{
    cursor.toggleMark(9);
    cursor.toggleMark(2);
    cursor.markUpTo(4, PaneCursor::OtherMarks::kept);
    EXPECT_THAT(marked(), ElementsAre("2", "3", "4", "9"));
    cursor.markUpTo(3);
    EXPECT_THAT(marked(), ElementsAre("2", "3")) << "from the same anchor";
}

TEST_F(PaneCursorTest, marksThatChangeBetweenTwoStepsOfARangeAreDroppedByTheNext)
{
    cursor.moveTo(2);
    cursor.markUpTo(3);
    cursor.invertMarks();
    cursor.markUpTo(4);
    EXPECT_THAT(marked(), ElementsAre("2", "3", "4"));
}

TEST_F(PaneCursorTest, afterARefreshARangeStartsAtTheCursor)
{
    cursor.moveTo(5);
    cursor.markUpTo(7);
    show({5, 7, 8, 9});
    cursor.restore("7");
    EXPECT_THAT(marked(), ElementsAre("5", "7"));
    cursor.markUpTo(3);
    EXPECT_THAT(marked(), ElementsAre("7", "8"));
}

TEST_F(PaneCursorTest, inATableThatGotShorterTheAnchorIsItsLastRow)
{
    cursor.moveTo(9);
    show({1, 2, 3});
    cursor.markUpTo(2);
    EXPECT_THAT(marked(), ElementsAre("2", "3"));
}

TEST_F(PaneCursorTest, withoutMarksARangeStartsAtTheCursor)
{
    cursor.moveTo(5);
    cursor.markUpTo(7);
    cursor.unmarkAll();
    EXPECT_THAT(marked(), IsEmpty());
    cursor.markUpTo(8);
    EXPECT_THAT(marked(), ElementsAre("7", "8"));
}

TEST_F(PaneCursorTest, whateverIsPressedTheSummaryIsThatOfTheMarks)
{
    cursor.moveTo(4);
    for (int const row : {5, 6, 2, 9, 0, 1, 8}) {
        cursor.markUpTo(row);
        std::int64_t bytes = 0;
        for (auto const &name : marked())
            bytes += std::stoi(name);
        EXPECT_EQ(rows.markedSummary(),
                  (PaneModel::MarkedSummary{.count = static_cast<int>(marked().size()), .bytes = bytes}));
    }
}

} // namespace
} // namespace tw::test
