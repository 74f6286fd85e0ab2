#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QTest>
#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PaneMouseTest : public WindowTest {
protected:
    PaneMouseTest()
    {
        left.folder("inner");
        left.file("a.txt", "333");
        left.file("b.md", "1");
        left.file("c.cpp", "22");
    }

    void click(int row, Qt::MouseButton button = Qt::LeftButton, Qt::KeyboardModifiers held = Qt::NoModifier)
    {
        QTest::mouseClick(table(PaneSide::left).viewport(), button, held, middleOf(row, PaneColumn::name));
    }

    void clickTitle(PaneColumn column)
    {
        auto &titles = table(PaneSide::left).titles();
        auto const section = static_cast<int>(column);
        QPoint const middle(titles.sectionViewportPosition(section) + titles.sectionSize(section) / 2,
                            titles.height() / 2);
        QTest::mouseClick(titles.viewport(), Qt::LeftButton, Qt::NoModifier, middle);
    }

    /// Drags the line before a column by `distance` pixels.
    void dragLineBefore(PaneColumn column, int distance)
    {
        auto *const titles = table(PaneSide::left).titles().viewport();
        QPoint const line(table(PaneSide::left).titles().sectionViewportPosition(static_cast<int>(column)), 5);
        QTest::mousePress(titles, Qt::LeftButton, Qt::NoModifier, line);
        QTest::mouseMove(titles, line + QPoint(distance / 2, 0));
        QTest::mouseMove(titles, line + QPoint(distance, 0));
        QTest::mouseRelease(titles, Qt::LeftButton, Qt::NoModifier, line + QPoint(distance, 0));
    }

    /// Drags the title of a column over the left half of another one's.
    void dragTitle(PaneColumn column, PaneColumn onto)
    {
        auto &titles = table(PaneSide::left).titles();
        auto const middle = [&](PaneColumn of, int part) {
            auto const section = static_cast<int>(of);
            return QPoint(titles.sectionViewportPosition(section) + titles.sectionSize(section) / part, 5);
        };
        auto const from = middle(column, 2);
        auto const to = middle(onto, 4);
        QTest::mousePress(titles.viewport(), Qt::LeftButton, Qt::NoModifier, from);
        QTest::mouseMove(titles.viewport(), (from + to) / 2);
        QTest::mouseMove(titles.viewport(), to);
        QTest::mouseRelease(titles.viewport(), Qt::LeftButton, Qt::NoModifier, to);
    }

    int width(PaneSide side, PaneColumn column) { return table(side).columnWidth(static_cast<int>(column)); }

    int sortedColumn() { return table(PaneSide::left).titles().sortIndicatorSection(); }

    Qt::SortOrder sortOrder() { return table(PaneSide::left).titles().sortIndicatorOrder(); }
};

TEST_F(PaneMouseTest, theButtonsForBackAndForwardWorkAllOverThePane)
{
    open();
    press(Qt::Key_Tab);
    pane(PaneSide::left).navigate(left.path("inner"));
    waitForPath(PaneSide::left, left.path("inner"));
    click(0, Qt::BackButton);
    EXPECT_EQ(controller->activeSide(), PaneSide::left);
    waitForPath(PaneSide::left, left.path());
    QTest::mouseClick(&window->pane(PaneSide::left).statusLine(), Qt::ForwardButton);
    waitForPath(PaneSide::left, left.path("inner"));
    click(0, Qt::BackButton);
    waitForPath(PaneSide::left, left.path());
    EXPECT_FALSE(window->pane(PaneSide::left).statusLine().isFlashing());
    click(0, Qt::BackButton);
    EXPECT_TRUE(window->pane(PaneSide::left).statusLine().isFlashing());
}

TEST_F(PaneMouseTest, clicksWithControlAndShiftMark)
{
    open();
    click(2, Qt::LeftButton, Qt::ControlModifier);
    click(4, Qt::LeftButton, Qt::ControlModifier);
    EXPECT_THAT(pane(PaneSide::left).model().markedNames(), ElementsAre("a.txt", "c.cpp"));
    click(3, Qt::LeftButton, Qt::ShiftModifier);
    EXPECT_THAT(pane(PaneSide::left).model().markedNames(), ElementsAre("b.md", "c.cpp"));
    EXPECT_EQ(cursorName(), "b.md");
}

TEST_F(PaneMouseTest, aDoubleClickWithControlIsTwoClicksThatMarkAndOpensNothing)
{
    open();
    auto *const view = table(PaneSide::left).viewport();
    auto const where = middleOf(1, PaneColumn::name);
    QTest::mouseClick(view, Qt::LeftButton, Qt::ControlModifier, where);
    EXPECT_THAT(pane(PaneSide::left).model().markedNames(), ElementsAre("inner"));
    QMouseEvent second(QEvent::MouseButtonDblClick, where, view->mapToGlobal(where), Qt::LeftButton, Qt::LeftButton,
                       Qt::ControlModifier);
    QApplication::sendEvent(view, &second);
    EXPECT_EQ(pane(PaneSide::left).requestedPath(), left.path());
    EXPECT_THAT(pane(PaneSide::left).model().markedNames(), IsEmpty());
}

TEST_F(PaneMouseTest, aClickPutsTheCursorOnTheRowAndDropsMarks)
{
    open();
    press(Qt::Key_End);
    press(Qt::Key_Insert);
    click(2);
    EXPECT_EQ(cursorName(), "a.txt");
    EXPECT_THAT(active().model().markedNames(), IsEmpty());
}

TEST_F(PaneMouseTest, aClickBelowTheRowsMovesNothing)
{
    open();
    click(2);
    auto *const viewport = table(PaneSide::left).viewport();
    QTest::mouseClick(viewport, Qt::LeftButton, Qt::NoModifier, {20, viewport->height() - 5});
    EXPECT_EQ(cursorName(), "a.txt");
}

TEST_F(PaneMouseTest, aClickIntoTheOtherPaneMakesItTheActiveOne)
{
    open();
    press(Qt::Key_Tab);
    ASSERT_EQ(controller->activeSide(), PaneSide::right);
    click(1);
    EXPECT_EQ(controller->activeSide(), PaneSide::left);
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
    EXPECT_EQ(cursorName(), "inner");
}

TEST_F(PaneMouseTest, aDoubleClickOpensTheFolder)
{
    open();
    QTest::mouseDClick(table(PaneSide::left).viewport(), Qt::LeftButton, Qt::NoModifier, middleOf(1, PaneColumn::name));
    waitForPath(PaneSide::left, left.path("inner"));
}

TEST_F(PaneMouseTest, draggingOverRowsSelectsNothingAndMovesNothing)
{
    open();
    auto *const viewport = table(PaneSide::left).viewport();
    QTest::mousePress(viewport, Qt::LeftButton, Qt::NoModifier, middleOf(1, PaneColumn::name));
    QTest::mouseMove(viewport, middleOf(4, PaneColumn::name));
    QTest::mouseRelease(viewport, Qt::LeftButton, Qt::NoModifier, middleOf(4, PaneColumn::name));
    EXPECT_EQ(cursorName(), "inner");
    EXPECT_EQ(table(PaneSide::left).currentIndex().row(), 1);
    EXPECT_FALSE(table(PaneSide::left).selectionModel()->hasSelection());
}

TEST_F(PaneMouseTest, theOtherButtonsMoveNothing)
{
    open();
    click(2);
    click(3, Qt::RightButton);
    click(4, Qt::MiddleButton);
    EXPECT_EQ(cursorName(), "a.txt");
}

TEST_F(PaneMouseTest, aClickOnATitleSortsByItAndAnotherTurnsRound)
{
    open();
    clickTitle(PaneColumn::size);
    EXPECT_THAT(shownNames(PaneSide::left), ElementsAre("..", "inner", "a.txt", "c.cpp", "b.md"));
    EXPECT_EQ(sortedColumn(), static_cast<int>(PaneColumn::size));
    EXPECT_EQ(sortOrder(), Qt::DescendingOrder);
    clickTitle(PaneColumn::size);
    EXPECT_THAT(shownNames(PaneSide::left), ElementsAre("..", "inner", "b.md", "c.cpp", "a.txt"));
    EXPECT_EQ(sortOrder(), Qt::AscendingOrder);
    clickTitle(PaneColumn::ext);
    EXPECT_THAT(shownNames(PaneSide::left), ElementsAre("..", "inner", "c.cpp", "b.md", "a.txt"));
    EXPECT_EQ(sortedColumn(), static_cast<int>(PaneColumn::ext));
}

TEST_F(PaneMouseTest, sortingKeepsTheCursorOnItsName)
{
    open();
    click(2);
    clickTitle(PaneColumn::ext);
    EXPECT_EQ(cursorName(), "a.txt");
    EXPECT_EQ(active().cursorRow(), 4);
}

TEST_F(PaneMouseTest, theAttributesDoNotSortAndTheArrowStaysWhereItIs)
{
    open();
    clickTitle(PaneColumn::attr);
    EXPECT_THAT(shownNames(PaneSide::left), ElementsAre("..", "inner", "a.txt", "b.md", "c.cpp"));
    EXPECT_EQ(sortedColumn(), static_cast<int>(PaneColumn::name));
    EXPECT_EQ(sortOrder(), Qt::AscendingOrder);
}

TEST_F(PaneMouseTest, aClickOnATitleLeavesTheCursorAlone)
{
    open();
    click(3);
    auto const scrolled = table(PaneSide::left).firstVisibleRow();
    clickTitle(PaneColumn::attr);
    EXPECT_EQ(table(PaneSide::left).currentIndex().row(), 3);
    EXPECT_EQ(table(PaneSide::left).firstVisibleRow(), scrolled);
}

TEST_F(PaneMouseTest, theLineBeforeAColumnFollowsThePointerAndTheNamePays)
{
    open();
    window->resize(1180, 720); // in which the name has something to pay with, in letters of any font
    processPosted();
    auto const date = width(PaneSide::left, PaneColumn::date);
    auto const name = width(PaneSide::left, PaneColumn::name);
    dragLineBefore(PaneColumn::date, -30);
    EXPECT_EQ(width(PaneSide::left, PaneColumn::date), date + 30);
    EXPECT_EQ(width(PaneSide::left, PaneColumn::name), name - 30);
}

TEST_F(PaneMouseTest, theWidthsOfTheColumnsHoldForBothPanesAndForTheNextStart)
{
    open();
    window->resize(1180, 720); // in which both panes have room for all columns, however small the screen
    auto const date = width(PaneSide::left, PaneColumn::date);
    dragLineBefore(PaneColumn::date, -30);
    EXPECT_EQ(width(PaneSide::right, PaneColumn::date), date + 30);
    EXPECT_EQ(defaults.text("tw.columns"), "date:" + std::to_string(date + 30));
    close();
    open();
    EXPECT_EQ(width(PaneSide::left, PaneColumn::date), date + 30);
    EXPECT_EQ(width(PaneSide::right, PaneColumn::date), date + 30);
}

TEST_F(PaneMouseTest, aDoubleClickOnALineFitsTheColumnToWhatIsInIt)
{
    left.file("long.extension");
    open();
    auto const usual = width(PaneSide::left, PaneColumn::ext);
    QPoint const line(table(PaneSide::left).titles().sectionViewportPosition(static_cast<int>(PaneColumn::ext)), 5);
    QTest::mouseDClick(table(PaneSide::left).titles().viewport(), Qt::LeftButton, Qt::NoModifier, line);
    EXPECT_GT(width(PaneSide::left, PaneColumn::ext), usual);
    EXPECT_EQ(defaults.text("tw.columns"), "ext:" + std::to_string(width(PaneSide::left, PaneColumn::ext)));
}

TEST_F(PaneMouseTest, theMenuOfTheTitlesChoosesColumnsAndTheirUsualWidths)
{
    open();
    window->resize(1180, 720);
    auto const date = width(PaneSide::left, PaneColumn::date);
    dragLineBefore(PaneColumn::date, -30);
    auto const choose = [this](QString const &title) {
        auto &titles = table(PaneSide::left).titles();
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), titles.mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(titles.viewport(), &event);
        auto *const menu = titles.findChild<QMenu *>();
        ASSERT_NE(menu, nullptr);
        for (auto *const action : menu->actions()) {
            if (action->text() == title)
                action->trigger();
        }
        delete menu;
    };
    choose(QStringLiteral("Attr"));
    EXPECT_TRUE(table(PaneSide::left).isColumnHidden(static_cast<int>(PaneColumn::attr)));
    EXPECT_TRUE(table(PaneSide::right).isColumnHidden(static_cast<int>(PaneColumn::attr)));
    choose(QStringLiteral("Usual Widths"));
    EXPECT_EQ(width(PaneSide::left, PaneColumn::date), date);
    EXPECT_EQ(defaults.text("tw.columns"), "-attr");
    choose(QStringLiteral("Attr"));
    EXPECT_FALSE(table(PaneSide::left).isColumnHidden(static_cast<int>(PaneColumn::attr)));
    EXPECT_EQ(defaults.text("tw.columns"), "");
}

TEST_F(PaneMouseTest, aTitleIsDraggedToMoveItsColumnInBothPanesAndForTheNextStart)
{
    open();
    window->resize(1180, 720);
    auto const shownOrder = [this](PaneSide side) {
        std::vector<int> columns;
        for (int place = 0; place < 5; ++place)
            columns.push_back(table(side).titles().logicalIndex(place));
        return columns;
    };
    dragTitle(PaneColumn::date, PaneColumn::ext);
    EXPECT_THAT(shownOrder(PaneSide::left), ElementsAre(0, 3, 1, 2, 4));
    EXPECT_THAT(shownOrder(PaneSide::right), ElementsAre(0, 3, 1, 2, 4));
    EXPECT_EQ(sortedColumn(), static_cast<int>(PaneColumn::name)) << "a drag is no click";
    close();
    open();
    EXPECT_THAT(shownOrder(PaneSide::left), ElementsAre(0, 3, 1, 2, 4));
}

TEST_F(PaneMouseTest, noColumnIsDraggedBeforeTheName)
{
    open();
    dragTitle(PaneColumn::size, PaneColumn::name);
    EXPECT_EQ(table(PaneSide::left).titles().logicalIndex(0), static_cast<int>(PaneColumn::name));
    dragTitle(PaneColumn::name, PaneColumn::date);
    EXPECT_EQ(table(PaneSide::left).titles().logicalIndex(0), static_cast<int>(PaneColumn::name));
}

TEST_F(PaneMouseTest, theLineBeforeAColumnFollowsThePointerInAnyOrder)
{
    defaults.setText("tw.columns", "order=attr,date,size,ext");
    open();
    window->resize(1180, 720);
    auto const date = width(PaneSide::left, PaneColumn::date);
    auto const name = width(PaneSide::left, PaneColumn::name);
    dragLineBefore(PaneColumn::date, -30);
    EXPECT_EQ(width(PaneSide::left, PaneColumn::date), date + 30);
    EXPECT_EQ(width(PaneSide::left, PaneColumn::name), name - 30);
}

TEST_F(PaneMouseTest, draggingALineDoesNotSort)
{
    open();
    dragLineBefore(PaneColumn::size, 10);
    EXPECT_EQ(sortedColumn(), static_cast<int>(PaneColumn::name));
}

TEST_F(PaneMouseTest, aNarrowPaneGivesUpColumnsAndAWideOneHasThemAgain)
{
    open();
    window->resize(window->minimumSize());
    EXPECT_TRUE(table(PaneSide::left).isColumnHidden(static_cast<int>(PaneColumn::attr)));
    EXPECT_FALSE(table(PaneSide::left).isColumnHidden(static_cast<int>(PaneColumn::ext)));
    window->resize(1400, 700);
    EXPECT_FALSE(table(PaneSide::left).isColumnHidden(static_cast<int>(PaneColumn::attr)));
}

} // namespace
} // namespace tw::test
