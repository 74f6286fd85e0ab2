#include "Tarnwick/Toolkit/Windows/MainWindow.h"

#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Widgets/PaneSplitter.h"
#include "Tarnwick/Toolkit/Windows/WelcomeWindow.h"
#include "tests/support/FakeApplications.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QScreen>
#include <QTest>
#include <gmock/gmock.h>

namespace tw::test {
namespace {

class MainWindowTest : public WindowTest {
protected:
    int width(PaneSide side) { return window->pane(side).width(); }

    QWidget &line() { return *window->divider().handle(1); }

    void dragLine(int distance)
    {
        auto const from = line().rect().center();
        QTest::mousePress(&line(), Qt::LeftButton, Qt::NoModifier, from);
        QTest::mouseMove(&line(), from + QPoint(distance, 0));
        QTest::mouseRelease(&line(), Qt::LeftButton, Qt::NoModifier, from);
        processPosted();
    }
};

TEST_F(MainWindowTest, isTitledAndAsLargeAsTheScreenLetsWithAFrameAround)
{
    open();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Tarnwick"));
    auto const free = window->screen()->availableGeometry();
    EXPECT_EQ(window->size(), QSize(1180, 720).boundedTo(free.size() - QSize(16, 48)));
    // With the most that a window manager puts above, below and beside it.
    EXPECT_TRUE(free.contains(QRect(window->pos(), window->size() + QSize(16, 48))));
}

TEST_F(MainWindowTest, itsKeysAskForWhatIsTheProgramsToDo)
{
    open();
    press(Qt::Key_F1);
    press(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(program.performed, (std::vector{Command::showAbout, Command::quit}));
    EXPECT_TRUE(window->isVisible());
}

TEST_F(MainWindowTest, theMenuBarOpensWithF10AndWithALetterAndGivesTheKeyboardBack)
{
    open();
    auto const menu = [] { return qobject_cast<QMenu *>(QApplication::activePopupWidget()); };
    auto const leave = [&] {
        while (menu()) {
            QTest::keyClick(menu(), Qt::Key_Escape);
            processPosted();
        }
        if (window->menuBar()->hasFocus())
            press(Qt::Key_Escape);
    };
    press(Qt::Key_F10);
    ASSERT_NE(menu(), nullptr);
    EXPECT_EQ(menu(), window->menuBar()->actions().front()->menu());
    EXPECT_EQ(menu()->activeAction(), menu()->actions().front());
    leave();
    EXPECT_TRUE(activeTable().hasFocus());
    press(Qt::Key_V, Qt::AltModifier);
    ASSERT_NE(menu(), nullptr);
    EXPECT_EQ(menu()->title(), QStringLiteral("&View"));
    leave();
    EXPECT_TRUE(activeTable().hasFocus());
    EXPECT_FALSE(active().isSearching());
}

TEST_F(MainWindowTest, theEditorInATerminalIsACheckedItemOfTheCommandsMenu)
{
    opening.applications = std::make_shared<FakeApplications>();
    open();
    press(Qt::Key_C, Qt::AltModifier);
    auto *const menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->title(), QStringLiteral("&Commands"));
    auto const items = menu->actions();
    auto const item = std::ranges::find_if(items, [](auto const *each) {
        return QString(each->text()).remove(QLatin1Char('&')) == QLatin1String("Edit in Terminal");
    });
    ASSERT_NE(item, items.end());
    EXPECT_TRUE((*item)->isEnabled());
    EXPECT_FALSE((*item)->isChecked());
    (*item)->trigger();
    menu->close();
    processPosted();
    EXPECT_EQ(Settings::editor.read(defaults), EditorChoice::terminal);
    menu->popup({});
    EXPECT_TRUE((*item)->isChecked());
    menu->close();
}

TEST_F(MainWindowTest, quittingWorksInEachWindowOfTheProgram)
{
    open();
    QPointer const welcome = WelcomeWindow::showIfFirstRun(defaults, *window);
    ASSERT_FALSE(welcome.isNull());
    ASSERT_TRUE(QTest::qWaitForWindowActive(welcome));
    QTest::keyClick(welcome, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(program.performed, std::vector{Command::quit});
}

TEST_F(MainWindowTest, thePanesAreEqualAtFirst)
{
    open();
    EXPECT_NEAR(width(PaneSide::left), width(PaneSide::right), 1);
}

TEST_F(MainWindowTest, theLineBetweenThePanesIsThinAndCanBeGrabbedBesideIt)
{
    open();
    EXPECT_EQ(line().contentsRect().width(), 1);
    EXPECT_EQ(line().width(), 9);
    EXPECT_EQ(width(PaneSide::left) + 1 + width(PaneSide::right), window->divider().width());
    // The invisible part lies above the panes.
    auto const beside = line().mapTo(window.get(), QPoint(1, 50));
    EXPECT_EQ(window->childAt(beside), &line());
}

TEST_F(MainWindowTest, noSideGetsNarrowerThanItsLeast)
{
    open();
    dragLine(-2000);
    EXPECT_EQ(width(PaneSide::left), 260);
    dragLine(4000);
    EXPECT_EQ(width(PaneSide::right), 260);
}

TEST_F(MainWindowTest, aDoubleClickOnTheLineMakesThePanesEqual)
{
    open();
    dragLine(-100);
    ASSERT_GT(width(PaneSide::right) - width(PaneSide::left), 150);
    QTest::mouseDClick(&line(), Qt::LeftButton);
    EXPECT_NEAR(width(PaneSide::left), width(PaneSide::right), 1);
}

TEST_F(MainWindowTest, aKeyMakesThePanesEqual)
{
    open();
    dragLine(-100);
    press(Qt::Key_Backslash, Qt::ControlModifier);
    EXPECT_NEAR(width(PaneSide::left), width(PaneSide::right), 1);
}

TEST_F(MainWindowTest, aLargerWindowKeepsTheProportion)
{
    open();
    window->resize(801, 500);
    processPosted();
    dragLine(-80);
    auto const before = static_cast<double>(width(PaneSide::left)) / window->width();
    window->resize(1180, 600);
    processPosted();
    EXPECT_NEAR(static_cast<double>(width(PaneSide::left)) / window->width(), before, 0.01);
}

TEST_F(MainWindowTest, sizeAndDividerComeBackWithTheNextWindow)
{
    open();
    window->resize(700, 555);
    processPosted();
    dragLine(-60);
    auto const leftWidth = width(PaneSide::left);
    close();
    open();
    EXPECT_EQ(window->size(), QSize(700, 555));
    EXPECT_NEAR(width(PaneSide::left), leftWidth, 1);
}

TEST_F(MainWindowTest, damagedSettingsAreAFirstStart)
{
    defaults.setText("TarnwickMain", "no geometry");
    defaults.setText("tw.split", "half");
    defaults.setText("tw.columns", "date:x ext:-5 size:99999999999 nothing");
    defaults.setText("tw.paneFontSize", "large");
    open();
    EXPECT_NEAR(width(PaneSide::left), width(PaneSide::right), 1);
    EXPECT_GT(table(PaneSide::left).columnWidth(static_cast<int>(PaneColumn::date)), 60);
}

TEST_F(MainWindowTest, theFontSizeOfTheRowsIsASettingThatEveryPaneTakesUpAtOnce)
{
    open();
    auto const usual = table(PaneSide::left).rowHeight(0);
    Settings::paneFontSize.write(defaults, 20);
    for (auto const side : {PaneSide::left, PaneSide::right})
        EXPECT_GT(table(side).rowHeight(0), usual);
    close();
    open();
    EXPECT_GT(table(PaneSide::left).rowHeight(0), usual);
}

TEST_F(MainWindowTest, theFolderPlacementIsASettingThatEveryPaneTakesUpAtOnce)
{
    for (auto *const folder : {&left, &right}) {
        folder->folder("folder");
        folder->file("a");
    }
    open();
    Settings::folderPlacement.write(defaults, FolderPlacement::bottom);
    for (auto const side : {PaneSide::left, PaneSide::right})
        EXPECT_THAT(shownNames(side), ::testing::ElementsAre("..", "a", "folder"));
}

} // namespace
} // namespace tw::test
