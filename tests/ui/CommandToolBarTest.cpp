#include "Tarnwick/Toolkit/Commands/CommandToolBar.h"

#include "Tarnwick/Commands/CommandTable.h"
#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Commands/CommandActions.h"
#include "tests/support/RecordingTarget.h"
#include "tests/ui/QtLoop.h"

#include <QMenu>
#include <QTest>
#include <QToolButton>
#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;

class CommandToolBarTest : public testing::Test {
protected:
    CommandToolBarTest()
    {
        bar->recentVisits = [this] { return visits; };
        bar->onVisitPicked = [this](PaneHistory::Visit const &visit) { picked.push_back(visit); };
        window.resize(900, 200);
        window.show();
        processPosted();
    }

    void store(ToolBarLayout const &layout) { Settings::toolBar.write(defaults, layout.text()); }

    QStringList labels()
    {
        QStringList all;
        for (auto const *action : bar->actions())
            all += action->text();
        return all;
    }

    /// What the history menu shows; what cannot be chosen, in brackets.
    QStringList historyItems()
    {
        auto *const menu = bar->button("tw.back")->menu();
        Q_EMIT menu->aboutToShow();
        QStringList titles;
        for (auto const *action : menu->actions())
            titles += action->isEnabled() ? action->text() : QLatin1Char('(') + action->text() + QLatin1Char(')');
        return titles;
    }

    void repaint()
    {
        window.update();
        processPosted();
    }

    RecordingTarget program{{{Command::back, {}}, {Command::refresh, {}}, {Command::toggleHidden, {}}}};
    MemoryDefaults defaults;
    std::vector<PaneHistory::Visit> visits;
    std::vector<PaneHistory::Visit> picked;
    QWidget window;
    CommandActions *const actions = new CommandActions(window, CommandScope::mainWindow, program);
    CommandToolBar *const bar = new CommandToolBar(*actions, defaults, &window);
};

TEST_F(CommandToolBarTest, aNewUserHasTheUsualItems)
{
    EXPECT_EQ(labels(), (QStringList{QStringLiteral("Back"),
                                     QStringLiteral("Forward"),
                                     QStringLiteral("Connect"),
                                     QStringLiteral("Refresh"),
                                     {},
                                     QStringLiteral("New Folder"),
                                     QStringLiteral("Copy"),
                                     QStringLiteral("Move"),
                                     QStringLiteral("Rename"),
                                     QStringLiteral("Delete"),
                                     {},
                                     QStringLiteral("Same Folder"),
                                     QStringLiteral("Hidden")}));
    EXPECT_EQ(bar->toolButtonStyle(), Qt::ToolButtonIconOnly);
}

TEST_F(CommandToolBarTest, aStoredArrangementGoesFirstAndIsShownAtOnce)
{
    store({.items = {"tw.swap", "tw.refresh"}, .labels = ToolBarLayout::Labels::shown});
    EXPECT_EQ(labels(), (QStringList{QStringLiteral("Other Pane"), QStringLiteral("Refresh")}));
    EXPECT_EQ(bar->toolButtonStyle(), Qt::ToolButtonTextUnderIcon);
}

TEST_F(CommandToolBarTest, everyItemHasAPictureAToolTipWithItsKeyAndAName)
{
    for (auto const &item : toolBarItems()) {
        if (!item.command)
            continue;
        store({.items = {item.identifier}});
        auto const *const button = bar->button(item.identifier);
        ASSERT_NE(button, nullptr) << item.identifier;
        EXPECT_FALSE(button->icon().pixmap(16).toImage().isNull()) << item.identifier;
        EXPECT_TRUE(button->toolTip().contains(QLatin1Char('('))) << item.identifier;
        EXPECT_FALSE(button->accessibleName().isEmpty()) << item.identifier;
    }
}

TEST_F(CommandToolBarTest, aButtonPerformsItsCommand)
{
    QTest::mouseClick(bar->button("tw.refresh"), Qt::LeftButton);
    EXPECT_EQ(program.performed, std::vector{Command::refresh});
}

TEST_F(CommandToolBarTest, buttonsFollowTheStatesOfTheirCommands)
{
    EXPECT_TRUE(bar->button("tw.refresh")->isEnabled());
    EXPECT_FALSE(bar->button("tw.hidden")->isChecked());
    program.states[Command::refresh].isEnabled = false;
    program.states[Command::toggleHidden].isChecked = true;
    repaint();
    EXPECT_FALSE(bar->button("tw.refresh")->isEnabled());
    EXPECT_TRUE(bar->button("tw.hidden")->isChecked());
}

TEST_F(CommandToolBarTest, anEmptyHistorySaysSo)
{
    program.states[Command::back].isEnabled = false;
    repaint();
    EXPECT_TRUE(bar->button("tw.back")->isEnabled()) << "its menu can be opened";
    EXPECT_EQ(historyItems(), QStringList{QStringLiteral("(No history yet)")});
}

TEST_F(CommandToolBarTest, aPlaceOfTheHistoryIsChosen)
{
    visits = {{"local", "/srv/a&b"}, {"web", "/home"}};
    EXPECT_EQ(historyItems(), (QStringList{QStringLiteral("/srv/a&&b"), QStringLiteral("web:/home")}));
    bar->button("tw.back")->menu()->actions().back()->trigger();
    EXPECT_THAT(picked, ElementsAre(visits.back()));
}

} // namespace
} // namespace tw::test
