#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"
#include "Tarnwick/Toolkit/Widgets/PathField.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QScrollBar>
#include <gmock/gmock.h>

#include <filesystem>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class PaneRefreshTest : public WindowTest {
protected:
    void fill(int count)
    {
        for (int number = 0; number < count; ++number)
            left.file("file" + std::to_string(1000 + number));
    }

    void refresh()
    {
        waitForReload(PaneSide::left, [this] { press(Qt::Key_R, Qt::ControlModifier); });
        processPosted();
    }

    void waitForNotice()
    {
        processUntil([&] { return !notice(PaneSide::left).empty(); });
    }

    int scrolled() { return table(PaneSide::left).verticalScrollBar()->value(); }
};

TEST_F(PaneRefreshTest, aRefreshKeepsScrollPositionCursorAndMarks)
{
    fill(300);
    open();
    for (int page = 0; page < 3; ++page)
        press(Qt::Key_PageDown);
    press(Qt::Key_Insert);
    auto const name = cursorName();
    // A place that is no whole number of rows, as a touch pad leaves it.
    table(PaneSide::left).verticalScrollBar()->setValue(scrolled() + 7);
    auto const before = scrolled();

    left.file("zz new");
    refresh();

    EXPECT_EQ(active().model().rowCount(), 302);
    EXPECT_EQ(scrolled(), before);
    EXPECT_EQ(cursorName(), name);
    EXPECT_EQ(active().model().markedNames().size(), 1U);
}

TEST_F(PaneRefreshTest, whatAnotherProgramDoesIsShownByItself)
{
    fill(3);
    open();
    press(Qt::Key_R, Qt::ControlModifier | Qt::AltModifier);
    // Until one of them comes when the folder is watched already.
    auto number = 0;
    processUntil([&] {
        left.file("another " + std::to_string(++number));
        return active().model().rowCount() > 4;
    });
    EXPECT_THAT(shownNames(PaneSide::left), testing::Contains("another 1"));
}

TEST_F(PaneRefreshTest, aRefreshOfALargeFolderPaintsOnce)
{
    fill(200);
    open();
    press(Qt::Key_End);
    processPosted();
    int paints = 0;
    auto &view = table(PaneSide::left);
    auto const painted = view.onPainted;
    view.onPainted = [&] {
        ++paints;
        painted();
    };
    refresh();
    EXPECT_EQ(paints, 1);
}

TEST_F(PaneRefreshTest, aFolderThatVanishedSaysSoAndItsListingStays)
{
    left.folder("inner");
    left.file("inner/deep");
    open();
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    waitForPath(PaneSide::left, left.path("inner"));
    std::filesystem::remove_all(left.path("inner"));
    press(Qt::Key_R, Qt::ControlModifier);
    waitForNotice();
    EXPECT_THAT(notice(PaneSide::left), HasSubstr(left.path("inner")));
    EXPECT_THAT(shownNames(PaneSide::left), ElementsAre("..", "deep"));
}

TEST_F(PaneRefreshTest, aFolderThatCannotBeOpenedSaysSoAndTheOldListingStays)
{
    left.link("broken", left.path("nowhere"));
    open();
    press(Qt::Key_End);
    press(Qt::Key_Return);
    waitForNotice();
    EXPECT_THAT(notice(PaneSide::left), HasSubstr(left.path("broken")));
    EXPECT_EQ(pane(PaneSide::left).pathOnShow(), left.path());
    EXPECT_EQ(cursorName(), "broken");
}

TEST_F(PaneRefreshTest, aGoodNavigationLeavesNoWarning)
{
    left.folder("inner");
    left.link("broken", left.path("nowhere"));
    open();
    press(Qt::Key_End);
    press(Qt::Key_Return);
    waitForNotice();
    press(Qt::Key_Up);
    press(Qt::Key_Return);
    waitForPath(PaneSide::left, left.path("inner"));
    EXPECT_THAT(status(PaneSide::left), StartsWith("0 files, 0 dirs"));
}

TEST_F(PaneRefreshTest, goingUpAgainFindsTheFolderScrolledAsItWasLeft)
{
    fill(300);
    left.folder("zz");
    defaults.setText("tw.folderPlacement", "bottom");
    open();
    press(Qt::Key_End);
    auto const first = table(PaneSide::left).firstVisibleRow();
    ASSERT_GT(first, 0);
    press(Qt::Key_Return);
    waitForPath(PaneSide::left, left.path("zz"));
    press(Qt::Key_Backspace);
    waitForPath(PaneSide::left, left.path());
    EXPECT_EQ(cursorName(), "zz");
    EXPECT_EQ(table(PaneSide::left).firstVisibleRow(), first);
}

TEST_F(PaneRefreshTest, aViewThatComesLaterShowsThePaneAsItWasLeft)
{
    fill(300);
    open();
    press(Qt::Key_End);
    press(Qt::Key_Insert);
    table(PaneSide::left).scrollToFirstVisibleRow(100);
    PaneIcons icons;
    PaneView later(controller->pane(PaneSide::left), defaults, icons);
    later.resize(window->pane(PaneSide::left).size());
    later.show();
    processPosted();
    EXPECT_EQ(later.table().firstVisibleRow(), 100);
    EXPECT_EQ(later.statusLine().text().toStdString(), status(PaneSide::left));
    EXPECT_EQ(later.pathField().text(), window->pane(PaneSide::left).pathField().text());
    EXPECT_EQ(later.table().model()->rowCount(), table(PaneSide::left).model()->rowCount());

    press(Qt::Key_Up);
    EXPECT_GT(later.table().firstVisibleRow(), 100) << "a key brings the cursor back into view";
}

TEST_F(PaneRefreshTest, aFolderThatArrivesInAHiddenViewStandsAtItsCursorWhenTheViewIsShown)
{
    fill(300);
    open();
    press(Qt::Key_End);
    auto const last = cursorName();
    press(Qt::Key_Home);
    PaneIcons icons;
    PaneView later(controller->pane(PaneSide::left), defaults, icons);
    pane(PaneSide::left).navigate(left.path(), last);
    processUntil([&] { return cursorName() == last; });
    later.resize(window->pane(PaneSide::left).size());
    later.show();
    processPosted();
    auto const shown = later.table().firstVisibleRow() + later.table().wholeVisibleRows();
    EXPECT_GE(shown, 300);
}

TEST_F(PaneRefreshTest, aBeepIsSeenOnTheStatusLine)
{
    left.file("a");
    open();
    press(Qt::Key_End);
    press(Qt::Key_Return);
    EXPECT_TRUE(window->pane(PaneSide::left).statusLine().isFlashing());
}

} // namespace
} // namespace tw::test
