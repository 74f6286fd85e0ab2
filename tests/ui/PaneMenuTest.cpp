#include "Tarnwick/Toolkit/Widgets/PathField.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QTest>

namespace tw::test {
namespace {

class PaneMenuTest : public WindowTest {
protected:
    PaneMenuTest()
    {
        left.folder("folder");
        left.file("file.txt");
    }

    ~PaneMenuTest() override
    {
        if (auto *const popup = QApplication::activePopupWidget())
            popup->close();
        processPosted();
    }

    static QMenu *menu() { return qobject_cast<QMenu *>(QApplication::activePopupWidget()); }

    /// Without the mark of its letter and without its key.
    static QString titleOf(QAction const &item)
    {
        auto title = item.text().section(QLatin1Char('\t'), 0, 0);
        return title.remove(QLatin1Char('&'));
    }

    static QStringList titles(QMenu const &shown)
    {
        QStringList all;
        for (auto const *action : shown.actions()) {
            if (!action->isSeparator())
                all += titleOf(*action);
        }
        return all;
    }

    static QAction *item(QMenu const &shown, char const *title)
    {
        for (auto *const action : shown.actions()) {
            if (titleOf(*action) == QString::fromUtf8(title))
                return action;
        }
        return nullptr;
    }

    void rightClick(PaneSide side, QPoint place)
    {
        auto &view = *table(side).viewport();
        QContextMenuEvent wish(QContextMenuEvent::Mouse, place, view.mapToGlobal(place));
        QApplication::sendEvent(&view, &wish);
        processPosted();
    }

    QRect rowOf(std::string const &name)
    {
        auto const row = *active().model().rowForName(name);
        return activeTable().visualRect(activeTable().model()->index(row, 0));
    }
};

TEST_F(PaneMenuTest, aKeyOpensItBelowTheRowOfTheCursor)
{
    open();
    active().moveCursorTo(*active().model().rowForName("folder"));
    press(Qt::Key_F10, Qt::ShiftModifier);
    ASSERT_NE(menu(), nullptr);
    EXPECT_EQ(titles(*menu()).front(), QStringLiteral("Open Folder"));
    EXPECT_EQ(menu()->pos(), activeTable().viewport()->mapToGlobal(rowOf("folder").bottomLeft()));
}

TEST_F(PaneMenuTest, aClickOpensItForTheRowUnderThePointerWhichGetsTheCursor)
{
    open();
    rightClick(PaneSide::left, rowOf("file.txt").center());
    ASSERT_NE(menu(), nullptr);
    EXPECT_EQ(cursorName(), "file.txt");
    EXPECT_EQ(titles(*menu()),
              (QStringList{
                  QStringLiteral("Open"), QStringLiteral("Open With"), QStringLiteral("View"), QStringLiteral("Cut"),
                  QStringLiteral("Copy to Clipboard"), QStringLiteral("Copy to Other Pane…"),
                  QStringLiteral("Move to Other Pane…"), QStringLiteral("Rename…"), QStringLiteral("Pack…"),
                  QStringLiteral("Unpack"), QStringLiteral("Copy"), QStringLiteral("Delete…"), QStringLiteral("Paste"),
                  QStringLiteral("New Folder…"), QStringLiteral("Refresh"), QStringLiteral("Show Hidden Files")}));
}

TEST_F(PaneMenuTest, aClickKeepsTheMarks)
{
    open();
    active().moveCursorTo(*active().model().rowForName("folder"));
    press(Qt::Key_Insert);
    rightClick(PaneSide::left, rowOf("file.txt").center());
    EXPECT_EQ(active().operands().names, std::vector<std::string>{"folder"});
}

TEST_F(PaneMenuTest, aClickOnTheOtherPaneMakesItTheActiveOne)
{
    open();
    rightClick(PaneSide::right, QPoint(5, table(PaneSide::right).viewport()->height() - 2));
    ASSERT_NE(menu(), nullptr);
    EXPECT_EQ(controller->activeSide(), PaneSide::right);
    EXPECT_EQ(titles(*menu()).front(), QStringLiteral("Paste"));
}

TEST_F(PaneMenuTest, aPathIsCopiedToTheClipboard)
{
    open();
    rightClick(PaneSide::left, rowOf("file.txt").center());
    ASSERT_NE(menu(), nullptr);
    item(*item(*menu(), "Copy")->menu(), "Full Path")->trigger();
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), left.path() + "/file.txt");
    EXPECT_EQ(status(PaneSide::left), "copied " + left.path() + "/file.txt");
}

TEST_F(PaneMenuTest, aFolderIsOpened)
{
    open();
    rightClick(PaneSide::left, rowOf("folder").center());
    ASSERT_NE(menu(), nullptr);
    item(*menu(), "Open Folder")->trigger();
    waitForPath(PaneSide::left, left.path() + "/folder");
}

TEST_F(PaneMenuTest, inTheFieldOfThePathTheKeyOpensTheMenuOfTheField)
{
    open();
    window->pane(PaneSide::left).pathField().setFocus();
    press(Qt::Key_F10, Qt::ShiftModifier);
    ASSERT_NE(menu(), nullptr);
    EXPECT_EQ(item(*menu(), "New Folder…"), nullptr);
}

} // namespace
} // namespace tw::test
