#include "Tarnwick/Toolkit/Dialogs/PromptSheet.h"
#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;

/// What each key does, in the left pane, on a folder with a subfolder and files.
class PaneKeysTest : public WindowTest {
protected:
    PaneKeysTest()
    {
        left.folder("inner");
        left.file("inner/deep");
        for (auto const *const name : {"a", "b", "c"})
            left.file(name);
        right.file("other");
    }

    /// Enough rows that no window shows them all.
    void openManyFiles()
    {
        for (int number = 100; number < 300; ++number)
            left.file("file" + std::to_string(number));
        open();
    }

    int cursorRow() { return active().cursorRow().value_or(-1); }

    int lastRow() { return active().model().rowCount() - 1; }

    bool isInView(int row)
    {
        auto &view = activeTable();
        auto const rect = view.visualRect(view.model()->index(row, 0));
        return view.viewport()->rect().contains(rect.adjusted(0, 0, -1, 0));
    }
};

TEST_F(PaneKeysTest, theArrowsMoveTheCursorByARowAndStopAtTheEnds)
{
    open();
    press(Qt::Key_Up);
    EXPECT_EQ(cursorRow(), 0);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(cursorName(), "a");
    for (int count = 0; count < 10; ++count)
        press(Qt::Key_Down);
    EXPECT_EQ(cursorName(), "c");
    press(Qt::Key_Up);
    EXPECT_EQ(cursorName(), "b");
}

TEST_F(PaneKeysTest, homeAndEndGoToTheEndsAndBringThemIntoView)
{
    openManyFiles();
    press(Qt::Key_End);
    EXPECT_EQ(cursorRow(), lastRow());
    EXPECT_TRUE(isInView(lastRow()));
    EXPECT_FALSE(isInView(0));
    press(Qt::Key_Home);
    EXPECT_EQ(cursorRow(), 0);
    EXPECT_TRUE(isInView(0));
}

TEST_F(PaneKeysTest, pageKeysMoveByAPageLessOneRow)
{
    openManyFiles();
    auto const stride = activeTable().wholeVisibleRows() - 1;
    ASSERT_GT(stride, 1);
    press(Qt::Key_PageDown);
    EXPECT_EQ(cursorRow(), stride);
    press(Qt::Key_PageDown);
    EXPECT_EQ(cursorRow(), 2 * stride);
    EXPECT_TRUE(isInView(cursorRow()));
    press(Qt::Key_PageUp);
    EXPECT_EQ(cursorRow(), stride);
    EXPECT_TRUE(isInView(cursorRow()));
}

TEST_F(PaneKeysTest, theKeysOfTheNumericPadDoTheSame)
{
    open();
    press(Qt::Key_End, Qt::KeypadModifier);
    EXPECT_EQ(cursorName(), "c");
    press(Qt::Key_Home, Qt::KeypadModifier);
    press(Qt::Key_Down, Qt::KeypadModifier);
    press(Qt::Key_Enter, Qt::KeypadModifier);
    waitForPath(PaneSide::left, left.path("inner"));
}

TEST_F(PaneKeysTest, returnOpensTheFolderAndBackspaceLeavesItWithTheCursorOnIt)
{
    open();
    press(Qt::Key_Down);
    ASSERT_EQ(cursorName(), "inner");
    press(Qt::Key_Return);
    waitForPath(PaneSide::left, left.path("inner"));
    EXPECT_THAT(shownNames(PaneSide::left), ElementsAre("..", "deep"));
    press(Qt::Key_Backspace);
    waitForPath(PaneSide::left, left.path());
    EXPECT_EQ(cursorName(), "inner");
}

TEST_F(PaneKeysTest, theKeysForBackAndForwardLeadThroughTheFoldersAndBeepAtTheEnd)
{
    open();
    active().navigate(left.path("inner"));
    waitForPath(PaneSide::left, left.path("inner"));
    press(Qt::Key_BracketLeft, Qt::ControlModifier);
    waitForPath(PaneSide::left, left.path());
    press(Qt::Key_BracketRight, Qt::ControlModifier);
    waitForPath(PaneSide::left, left.path("inner"));
    press(Qt::Key_Left, Qt::AltModifier);
    waitForPath(PaneSide::left, left.path());
    EXPECT_FALSE(window->pane(PaneSide::left).statusLine().isFlashing());
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_TRUE(window->pane(PaneSide::left).statusLine().isFlashing());
    press(Qt::Key_Right, Qt::AltModifier);
    waitForPath(PaneSide::left, left.path("inner"));
}

TEST_F(PaneKeysTest, returnOnTheParentRowGoesUp)
{
    open();
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    waitForPath(PaneSide::left, left.path("inner"));
    press(Qt::Key_Home);
    press(Qt::Key_Return);
    waitForPath(PaneSide::left, left.path());
    EXPECT_EQ(cursorName(), "inner");
}

TEST_F(PaneKeysTest, tabSwitchesSidesAndBack)
{
    open();
    press(Qt::Key_Tab);
    EXPECT_EQ(controller->activeSide(), PaneSide::right);
    EXPECT_TRUE(table(PaneSide::right).hasFocus());
    press(Qt::Key_Down);
    EXPECT_EQ(cursorName(), "other");
    press(Qt::Key_Tab);
    EXPECT_EQ(controller->activeSide(), PaneSide::left);
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(PaneKeysTest, tabWithShiftSwitchesSidesToo)
{
    open();
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(controller->activeSide(), PaneSide::right);
}

TEST_F(PaneKeysTest, insertMarksAndGoesOn)
{
    open();
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Insert);
    press(Qt::Key_Insert);
    EXPECT_THAT(active().model().markedNames(), ElementsAre("a", "b"));
    EXPECT_EQ(cursorName(), "c");
    EXPECT_NE(status(PaneSide::left).find("2 marked"), std::string::npos) << status(PaneSide::left);
}

TEST_F(PaneKeysTest, escapeTakesAllMarksAway)
{
    open();
    press(Qt::Key_End);
    press(Qt::Key_Insert);
    ASSERT_THAT(active().model().markedNames(), ElementsAre("c"));
    press(Qt::Key_Escape);
    EXPECT_TRUE(active().model().markedNames().empty());
}

TEST_F(PaneKeysTest, shiftAndAnArrowMarkARange)
{
    open();
    press(Qt::Key_End);
    press(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_THAT(active().model().markedNames(), ElementsAre("b", "c"));
}

TEST_F(PaneKeysTest, controlAndRReadsTheFolderAgain)
{
    open();
    left.file("d");
    waitForReload(PaneSide::left, [this] { press(Qt::Key_R, Qt::ControlModifier); });
    EXPECT_THAT(shownNames(PaneSide::left), ElementsAre("..", "inner", "a", "b", "c", "d"));
}

TEST_F(PaneKeysTest, hiddenFilesAreShownAndHiddenByTheirKey)
{
    left.file(".hidden");
    open();
    press(Qt::Key_Period, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_THAT(shownNames(PaneSide::left), ElementsAre("..", "inner", ".hidden", "a", "b", "c"));
    press(Qt::Key_Period, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_THAT(shownNames(PaneSide::left), ElementsAre("..", "inner", "a", "b", "c"));
}

TEST_F(PaneKeysTest, controlAndWClosesTheWindow)
{
    open();
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(PaneKeysTest, lettersFindANameAndTheStatusLineShowsThem)
{
    open();
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("C"));
    EXPECT_EQ(cursorName(), "c");
    EXPECT_EQ(status(PaneSide::left), "search: C|");
    press(Qt::Key_Escape);
    EXPECT_EQ(status(PaneSide::left).find("search"), std::string::npos);
}

TEST_F(PaneKeysTest, allIsMarkedAndUnmarkedByKeys)
{
    open();
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_THAT(active().model().markedNames(), ElementsAre("inner", "a", "b", "c"));
    press(Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(active().model().markedNames().empty());
}

TEST_F(PaneKeysTest, thePlusOfTheNumericPadMarksByAMask)
{
    open();
    press(Qt::Key_Plus, Qt::KeypadModifier);
    processUntil(
        [this] { return window->findChild<PromptSheet *>() && window->findChild<PromptSheet *>()->isVisible(); });
    auto &sheet = *window->findChild<PromptSheet *>();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&sheet));
    sheet.field().setText(QStringLiteral("[ab]"));
    press(Qt::Key_Return);
    processUntil([this] { return !active().model().isUnmarked(); });
    EXPECT_THAT(active().model().markedNames(), ElementsAre("a", "b"));
}

TEST_F(PaneKeysTest, aKeyThatMeansNothingMovesNothing)
{
    open();
    press(Qt::Key_Down);
    press(Qt::Key_F9);
    press(Qt::Key_Left);
    press(Qt::Key_Right);
    press(Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(cursorName(), "inner");
    EXPECT_EQ(activeTable().currentIndex().row(), 1);
}

} // namespace
} // namespace tw::test
