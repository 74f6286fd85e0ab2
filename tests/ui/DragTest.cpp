#include "Tarnwick/Clipboard/FileFormats.h"
#include "Tarnwick/Toolkit/Dragging/DraggedFiles.h"
#include "Tarnwick/Toolkit/Widgets/TabBarView.h"
#include "Tarnwick/Toolkit/Widgets/TabStrip.h"
#include "Tarnwick/Toolkit/Windows/PaneContainerView.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QMenu>
#include <QTest>
#include <gmock/gmock.h>

#include <filesystem>

namespace tw::test {
namespace {

using std::filesystem::exists;
using ::testing::ElementsAre;

/// Things are dragged over the left side, as the toolkit reports it.
class DragTest : public WindowTest {
protected:
    DragTest()
    {
        left.folder("inner");
        left.file("a.txt", "a");
        left.file("b.txt", "b");
        right.file("new.txt", "words");
    }

    static constexpr Qt::DropActions anyAction = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;

    QWidget &side() { return window->side(PaneSide::left); }

    /// A row of the left pane, as a place of its side.
    QPoint row(std::string_view name)
    {
        auto const index = pane(PaneSide::left).model().rowForName(name).value();
        return table(PaneSide::left).viewport()->mapTo(&side(), middleOf(index, PaneColumn::name));
    }

    QPoint belowRows()
    {
        auto *const rows = table(PaneSide::left).viewport();
        return rows->mapTo(&side(), QPoint(rows->width() / 2, rows->height() / 2));
    }

    std::unique_ptr<QMimeData> fromRight()
    {
        return std::make_unique<DraggedFiles>(
            FileDrag{.connection = "local", .directory = right.path(), .names = {"new.txt"}});
    }

    /// What a target does is answered by the event.
    bool over(QMimeData const &data, QPoint place, Qt::KeyboardModifiers held = Qt::NoModifier)
    {
        QDragEnterEvent enter(place, anyAction, &data, Qt::LeftButton, held);
        QApplication::sendEvent(&side(), &enter);
        QDragMoveEvent move(place, anyAction, &data, Qt::LeftButton, held);
        QApplication::sendEvent(&side(), &move);
        action = move.dropAction();
        return move.isAccepted();
    }

    bool drop(QMimeData const &data, QPoint place, Qt::KeyboardModifiers held = Qt::NoModifier)
    {
        over(data, place, held);
        QDropEvent event(place, anyAction, &data, Qt::LeftButton, held);
        QApplication::sendEvent(&side(), &event);
        action = event.dropAction();
        return event.isAccepted();
    }

    std::vector<std::string> marked() { return pane(PaneSide::left).model().markedNames(); }

    Qt::DropAction action = Qt::IgnoreAction;
};

TEST_F(DragTest, thePointerAndTheStatusLineSayWhatADropWouldDo)
{
    open();
    auto const before = status(PaneSide::left);
    auto const files = fromRight();
    EXPECT_TRUE(over(*files, row("inner")));
    EXPECT_EQ(action, Qt::CopyAction);
    EXPECT_EQ(status(PaneSide::left), "copy 1 item to " + left.path("inner"));
    EXPECT_TRUE(over(*files, belowRows(), Qt::ShiftModifier));
    EXPECT_EQ(action, Qt::MoveAction);
    EXPECT_EQ(status(PaneSide::left), "move 1 item to " + left.path());
    EXPECT_TRUE(over(*files, belowRows(), Qt::AltModifier));
    EXPECT_EQ(action, Qt::LinkAction);
    QDragLeaveEvent leave;
    QApplication::sendEvent(&side(), &leave);
    EXPECT_EQ(status(PaneSide::left), before);
}

TEST_F(DragTest, whatIsDroppedOnAFolderIsCopiedIntoIt)
{
    open();
    EXPECT_TRUE(drop(*fromRight(), row("inner")));
    processUntil([&] { return exists(left.path("inner/new.txt")); });
    EXPECT_TRUE(exists(right.path("new.txt")));
}

TEST_F(DragTest, filesOfAnotherProgramAreMovedHereAndNotByTheirProgram)
{
    open();
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(right.path("new.txt")))});
    EXPECT_TRUE(drop(data, belowRows(), Qt::ShiftModifier));
    EXPECT_EQ(action, Qt::CopyAction) << "a source that hears of a move may delete before all is copied";
    processUntil([&] { return exists(left.path("new.txt")) && !exists(right.path("new.txt")); });
}

TEST_F(DragTest, withAltAMenuAsks)
{
    open();
    EXPECT_TRUE(drop(*fromRight(), belowRows(), Qt::AltModifier));
    processUntil([] { return QApplication::activePopupWidget() != nullptr; });
    auto *const menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    EXPECT_EQ(menu->actions().at(1)->text(), QStringLiteral("Move Here"));
    QTest::keyClick(menu, Qt::Key_Down);
    QTest::keyClick(menu, Qt::Key_Down);
    QTest::keyClick(menu, Qt::Key_Return);
    processUntil([&] { return exists(left.path("new.txt")) && !exists(right.path("new.txt")); });
}

TEST_F(DragTest, nonsenseIsRefusedBeforeItIsDropped)
{
    open();
    DraggedFiles const inner({.connection = "local", .directory = left.path(), .names = {"inner"}});
    EXPECT_FALSE(over(inner, belowRows()));
    EXPECT_EQ(status(PaneSide::left), "already here");
    EXPECT_FALSE(over(inner, row("inner")));
    EXPECT_EQ(status(PaneSide::left), "a folder cannot go into itself");
    EXPECT_FALSE(drop(inner, row("inner")));
    QMimeData words;
    words.setText(QStringLiteral("words"));
    EXPECT_FALSE(over(words, belowRows()));
}

TEST_F(DragTest, aTabIsATarget)
{
    open();
    controller->cmdNewTab();
    pane(PaneSide::left).navigate(left.path("inner"));
    waitForPath(PaneSide::left, left.path("inner"));
    auto &strip = window->side(PaneSide::left).tabBar().strip();
    EXPECT_TRUE(drop(*fromRight(), strip.mapTo(&side(), strip.tabRect(0).center())));
    processUntil([&] { return exists(left.path("new.txt")); });
}

TEST_F(DragTest, markedRowsKeepTheirMarksUntilThePressTurnsOutToBeAClick)
{
    open();
    controller->cmdMarkAll();
    auto *const rows = table(PaneSide::left).viewport();
    auto const place = middleOf(2, PaneColumn::name);
    QTest::mousePress(rows, Qt::LeftButton, Qt::NoModifier, place);
    EXPECT_THAT(marked(), ElementsAre("inner", "a.txt", "b.txt"));
    QTest::mouseRelease(rows, Qt::LeftButton, Qt::NoModifier, place);
    EXPECT_THAT(marked(), ElementsAre());
    EXPECT_EQ(cursorName(), "a.txt");
}

TEST_F(DragTest, otherProgramsGetTheCopiesOfAHostsFilesAndNothingWhenThereAreNone)
{
    DraggedFiles files({.connection = "box", .directory = "/srv", .names = {"a b"}});
    auto const list = QString::fromLatin1(FileFormats::uriList.data());
    EXPECT_EQ(files.data(list), "sftp://box/srv/a%20b\r\n");
    std::vector<std::string> copies{"/copies/a b"};
    files.offerInstead([&] { return copies; });
    EXPECT_EQ(files.data(list), "file:///copies/a%20b\r\n");
    copies.clear();
    EXPECT_TRUE(files.data(list).isEmpty());
}

} // namespace
} // namespace tw::test
