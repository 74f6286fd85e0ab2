#include "Tarnwick/Toolkit/Commands/CommandActions.h"

#include "Tarnwick/Commands/CommandTable.h"
#include "Tarnwick/Toolkit/Commands/CommandKeySequences.h"
#include "tests/support/RecordingTarget.h"
#include "tests/ui/QtLoop.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

/// A widget that commands act on.
class Target final : public QWidget, public RecordingTarget {
public:
    explicit Target(QWidget *parent = nullptr) : QWidget(parent) { setFocusPolicy(Qt::StrongFocus); }
};

class CommandActionsTest : public testing::Test {
protected:
    CommandActionsTest()
    {
        window.show();
        window.activateWindow();
        inner->setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    void give(Target &target, Command command, CommandState state = {}) { target.states[command] = state; }

    void trigger(Command command) { actions->action(command).trigger(); }

    static std::vector<Command> only(Command command) { return {command}; }

    RecordingTarget program{{{Command::quit, {}}}};
    Target window;
    Target *const outer = new Target(&window);
    Target *const inner = new Target(outer);
    CommandActions *const actions = new CommandActions(window, CommandScope::mainWindow, program);
};

TEST(CommandKeySequencesTest, everyShortcutOfTheTableIsOneChord)
{
    for (auto const &row : commandTable()) {
        for (auto const &key : shortcutsOf(row)) {
            EXPECT_EQ(key.count(), 1) << row.title;
            EXPECT_NE(key[0].key(), Qt::Key_unknown) << row.title;
        }
    }
}

TEST(CommandKeySequencesTest, aPanesKeyIsNoShortcut)
{
    EXPECT_TRUE(shortcutsOf(rowOf(Command::otherPane)).isEmpty());
    EXPECT_EQ(keyTextOf(rowOf(Command::otherPane)), QStringLiteral("Tab"));
    EXPECT_EQ(keyTextOf(rowOf(Command::toggleHidden)), QStringLiteral("Ctrl+Shift+."));
}

TEST_F(CommandActionsTest, aCommandActsOnWhatHasTheKeyboardIfThatKnowsIt)
{
    give(*inner, Command::refresh);
    give(window, Command::refresh);
    trigger(Command::refresh);
    EXPECT_EQ(inner->performed, only(Command::refresh));
    EXPECT_TRUE(window.performed.empty());
}

TEST_F(CommandActionsTest, aCommandThatIsNotKnownThereGoesUpToTheWindowAndThenToTheProgram)
{
    give(*outer, Command::refresh);
    give(window, Command::connect);
    trigger(Command::refresh);
    trigger(Command::connect);
    trigger(Command::quit);
    EXPECT_EQ(outer->performed, only(Command::refresh));
    EXPECT_EQ(window.performed, only(Command::connect));
    EXPECT_EQ(program.performed, only(Command::quit));
}

TEST_F(CommandActionsTest, aCommandNeverGoesOnToAnotherWindow)
{
    Target above;
    above.states[Command::refresh] = {};
    window.setParent(&above, Qt::Window);
    trigger(Command::refresh);
    EXPECT_TRUE(above.performed.empty());
    window.setParent(nullptr);
}

TEST_F(CommandActionsTest, aCommandThatIsDisabledIsNotPerformed)
{
    give(window, Command::refresh, {.isEnabled = false});
    trigger(Command::refresh);
    EXPECT_TRUE(window.performed.empty());
}

TEST_F(CommandActionsTest, theKeysOfTheTablePerformTheirCommands)
{
    give(window, Command::toggleHidden);
    QTest::keyClick(inner, Qt::Key_Greater, Qt::ControlModifier | Qt::ShiftModifier);
    QTest::keyClick(inner, Qt::Key_Period, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(window.performed, (std::vector{Command::toggleHidden, Command::toggleHidden}));
}

TEST_F(CommandActionsTest, theMenuBarHasEveryCommandWithAPlaceInItsMenu)
{
    QMenuBar bar;
    actions->fill(bar);
    QStringList shown;
    for (auto const *menu : bar.actions()) {
        for (auto const *item : menu->menu()->actions()) {
            if (!item->isSeparator())
                shown += menu->text() + QLatin1Char('/') + item->text().section(QLatin1Char('\t'), 0, 0);
        }
    }
    QStringList wanted;
    for (auto const which : {Menu::application, Menu::file, Menu::view, Menu::hosts, Menu::commands}) {
        for (auto const &row : commandTable()) {
            if (row.place.menu == which)
                wanted += QString::fromUtf8(titleOf(which)) + QLatin1Char('/') + QString::fromUtf8(row.title);
        }
    }
    EXPECT_EQ(shown, wanted);
}

TEST_F(CommandActionsTest, aMenuShowsTheStatesOfTheMomentInWhichItOpens)
{
    give(window, Command::toggleHidden, {.isChecked = true});
    give(window, Command::refresh, {.isEnabled = false});
    auto *const menu = actions->contextMenu(&window);
    menu->popup({});
    EXPECT_TRUE(actions->action(Command::toggleHidden).isChecked());
    EXPECT_FALSE(actions->action(Command::refresh).isEnabled());
    menu->close();
    processPosted();
    // A key asks anew.
    EXPECT_TRUE(actions->action(Command::refresh).isEnabled());
}

} // namespace
} // namespace tw::test
