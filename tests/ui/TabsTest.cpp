#include "Tarnwick/Toolkit/Widgets/TabBarView.h"
#include "Tarnwick/Toolkit/Widgets/TabStrip.h"
#include "Tarnwick/Toolkit/Windows/PaneContainerView.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QAccessible>
#include <QMenu>
#include <QTest>
#include <QToolButton>
#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;

class TabsTest : public WindowTest {
protected:
    TabsTest()
    {
        for (auto const *name : {"one", "two", "three"})
            left.folder(name);
    }

    TabBarView &bar() { return window->side(PaneSide::left).tabBar(); }

    TabStrip &strip() { return bar().strip(); }

    PaneContainer &tabs() { return controller->container(PaneSide::left); }

    std::vector<std::string> titles()
    {
        std::vector<std::string> shown;
        for (int index = 0; index < strip().count(); ++index)
            shown.push_back(strip().tabText(index).toStdString());
        return shown;
    }

    /// Opens a folder of `left` in a new tab, which shows.
    void openTab(std::string const &name)
    {
        controller->cmdNewTab();
        pane(PaneSide::left).navigate(left.path(name));
        waitForPath(PaneSide::left, left.path(name));
    }

    /// Four tabs, of which the last one shows: the test's folder, "one", "two" and "three".
    void openTabs()
    {
        open();
        for (auto const *name : {"one", "two", "three"})
            openTab(name);
    }

    void clickTab(int index, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(&strip(), button, Qt::NoModifier, strip().tabRect(index).center());
        processPosted();
    }

    /// The menu that has come up.
    QMenu *menu()
    {
        processUntil([] { return QApplication::activePopupWidget() != nullptr; });
        return qobject_cast<QMenu *>(QApplication::activePopupWidget());
    }

    void choose(int item)
    {
        auto *const shown = menu();
        ASSERT_TRUE(shown);
        shown->actions().at(item)->trigger();
        shown->close();
        processPosted();
    }
};

TEST_F(TabsTest, everySideHasATabFromTheStart)
{
    open();
    EXPECT_EQ(bar().height(), 22);
    EXPECT_TRUE(bar().isVisible());
    EXPECT_EQ(strip().count(), 1);
    EXPECT_EQ(window->side(PaneSide::right).tabBar().height(), 22);
    EXPECT_FALSE(bar().overflowButton().isVisible());
}

TEST_F(TabsTest, keysOpenGoToAndCloseTabs)
{
    open();
    press(Qt::Key_T, Qt::ControlModifier);
    waitForPath(PaneSide::left, left.path());
    press(Qt::Key_T, Qt::ControlModifier);
    waitForPath(PaneSide::left, left.path());
    EXPECT_EQ(strip().count(), 3);
    EXPECT_EQ(strip().currentIndex(), 2);
    press(Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(strip().currentIndex(), 0);
    press(Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(strip().currentIndex(), 2);
    press(Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(strip().currentIndex(), 1);
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(strip().count(), 2);
    EXPECT_TRUE(window->isVisible());
    press(Qt::Key_W, Qt::ControlModifier);
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window->isVisible()) << "the last tab takes the window with it";
}

TEST_F(TabsTest, aClickOnATabShowsItAndItsRowsHaveTheKeyboard)
{
    openTabs();
    controller->setActive(PaneSide::right);
    table(PaneSide::right).setFocus();
    clickTab(1);
    EXPECT_EQ(pane(PaneSide::left).pathOnShow(), left.path("one"));
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
    EXPECT_EQ(controller->activeSide(), PaneSide::left);
    table(PaneSide::right).setFocus();
    clickTab(1);
    EXPECT_TRUE(table(PaneSide::left).hasFocus()) << "also a click on the tab that shows";
}

TEST_F(TabsTest, theViewShowsTheRowsAndTheCursorOfItsTab)
{
    openTabs();
    clickTab(0);
    EXPECT_THAT(shownNames(PaneSide::left), ElementsAre("..", "one", "three", "two"));
    EXPECT_EQ(table(PaneSide::left).model()->rowCount(), 4);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    clickTab(3);
    EXPECT_EQ(table(PaneSide::left).model()->rowCount(), 1);
    clickTab(0);
    EXPECT_EQ(cursorName(), "three");
    press(Qt::Key_Down);
    EXPECT_EQ(cursorName(), "two");
}

TEST_F(TabsTest, aMiddleClickAndTheCloseButtonCloseATab)
{
    openTabs();
    clickTab(1, Qt::MiddleButton);
    EXPECT_THAT(titles(), ElementsAre(testing::_, "two", "three"));
    auto *const button = strip().tabButton(1, QTabBar::RightSide);
    ASSERT_TRUE(button);
    QTest::mouseClick(button, Qt::LeftButton);
    processPosted();
    EXPECT_THAT(titles(), ElementsAre(testing::_, "three"));
}

TEST_F(TabsTest, theOnlyTabHasNoCloseButton)
{
    open();
    EXPECT_EQ(strip().tabButton(0, QTabBar::RightSide), nullptr);
    clickTab(0, Qt::MiddleButton);
    EXPECT_EQ(strip().count(), 1);
}

TEST_F(TabsTest, thePlusAndADoubleClickBesideTheTabsOpenOne)
{
    open();
    QTest::mouseClick(&bar().newTabButton(), Qt::LeftButton);
    processPosted();
    EXPECT_EQ(strip().count(), 2);
    QTest::mouseDClick(&bar(), Qt::LeftButton, Qt::NoModifier, QPoint(bar().width() - 3, 5));
    processPosted();
    EXPECT_EQ(strip().count(), 3);
    waitForPath(PaneSide::left, left.path());
}

TEST_F(TabsTest, aTabIsDraggedToAnotherPlace)
{
    openTabs();
    clickTab(1);
    auto const from = strip().tabRect(1).center();
    auto const to = strip().tabRect(3).center() + QPoint(5, 0);
    QTest::mousePress(&strip(), Qt::LeftButton, Qt::NoModifier, from);
    for (int step = 1; step <= 10; ++step)
        QTest::mouseMove(&strip(), from + (to - from) * step / 10);
    QTest::mouseRelease(&strip(), Qt::LeftButton, Qt::NoModifier, to);
    processUntil([this] { return tabs().activeIndex() == 3; });
    EXPECT_EQ(tabs().activePane()->pathOnShow(), left.path("one"));
    EXPECT_THAT(titles(), ElementsAre(testing::_, "two", "three", "one"));
}

TEST_F(TabsTest, theMenuOfATabClosesTheOthersOrCopiesIt)
{
    openTabs();
    auto const openMenu = [this] {
        auto const at = strip().tabRect(1).center();
        QContextMenuEvent wanted(QContextMenuEvent::Mouse, strip().mapTo(&bar(), at), strip().mapToGlobal(at));
        QApplication::sendEvent(&bar(), &wanted);
    };
    openMenu();
    choose(2);
    waitForPath(PaneSide::left, left.path("one"));
    EXPECT_THAT(titles(), ElementsAre(testing::_, "one", "two", "three", "one"));
    openMenu();
    choose(1);
    EXPECT_THAT(titles(), ElementsAre("one"));
}

TEST_F(TabsTest, whatDoesNotFitIsInAMenu)
{
    open();
    for (int count = 0; count < 20; ++count)
        controller->cmdNewTab();
    processPosted();
    ASSERT_TRUE(bar().overflowButton().isVisible());
    EXPECT_TRUE(bar().rect().contains(bar().newTabButton().geometry()));
    EXPECT_FALSE(bar().newTabButton().geometry().intersects(bar().overflowButton().geometry()));
    QTest::mouseClick(&bar().overflowButton(), Qt::LeftButton);
    ASSERT_TRUE(menu());
    EXPECT_EQ(menu()->actions().size(), 21);
    choose(4);
    EXPECT_EQ(strip().currentIndex(), 4);
    EXPECT_TRUE(strip().rect().intersects(strip().tabRect(4)));
    waitForPath(PaneSide::left, left.path());
}

TEST_F(TabsTest, theWheelGoesFromTabToTab)
{
    openTabs();
    auto const at = strip().tabRect(3).center();
    QWheelEvent up(QPointF(at), QPointF(strip().mapToGlobal(at)), QPoint(), QPoint(0, 120), Qt::NoButton,
                   Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&strip(), &up);
    EXPECT_EQ(tabs().activeIndex(), 2U);
    EXPECT_EQ(pane(PaneSide::left).pathOnShow(), left.path("two"));
}

TEST_F(TabsTest, aTitleIsShownAsItIsWritten)
{
    left.folder("a&b <i>");
    open();
    pane(PaneSide::left).navigate(left.path("a&b <i>"));
    waitForPath(PaneSide::left, left.path("a&b <i>"));
    EXPECT_EQ(strip().tabText(0), QStringLiteral("a&&b <i>"));
    EXPECT_EQ(strip().accessibleTabName(0), QStringLiteral("a&b <i>"));
    EXPECT_TRUE(strip().tabToolTip(0).contains(QStringLiteral("&lt;i&gt;")));
}

TEST_F(TabsTest, theBarTellsAScreenReaderWhatItIs)
{
    open();
    EXPECT_EQ(strip().accessibleName(), QStringLiteral("Tabs"));
    EXPECT_EQ(bar().newTabButton().accessibleName(), QStringLiteral("New Tab"));
    EXPECT_EQ(bar().overflowButton().accessibleName(), QStringLiteral("All Tabs"));
    auto *const tab = QAccessible::queryAccessibleInterface(&strip())->child(0);
    ASSERT_TRUE(tab);
    EXPECT_EQ(tab->role(), QAccessible::PageTab);
    EXPECT_EQ(tab->text(QAccessible::Name), strip().tabText(0));
}

TEST_F(TabsTest, theTablesOfBothSidesBeginAtTheSameHeight)
{
    openTabs();
    auto const top = [this](PaneSide side) { return table(side).mapTo(window.get(), QPoint()).y(); };
    EXPECT_EQ(top(PaneSide::left), top(PaneSide::right));
}

} // namespace
} // namespace tw::test
