#include "Tarnwick/Toolkit/Commands/CommandActions.h"

#include "Tarnwick/Commands/CommandTable.h"
#include "Tarnwick/Toolkit/Commands/CommandKeySequences.h"
#include "Tarnwick/Toolkit/Commands/Mnemonics.h"
#include "tests/support/RecordingTarget.h"
#include "tests/ui/QtLoop.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
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

    int claimed = 0; ///< the key that it wants for itself, as a text field does
    std::vector<int> keys;

protected:
    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent *>(event)->key() == claimed)
            event->accept();
        if (event->type() == QEvent::KeyPress)
            keys.push_back(static_cast<QKeyEvent *>(event)->key());
        return QWidget::event(event);
    }
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

    enum class Held { shortly, forLong };

    /// A press as the window system sends it: the shortcut is offered first. QTest knows no scan codes.
    void pressAt(quint32 scanCode, Qt::Key key, Qt::KeyboardModifiers held, Held how = Held::shortly)
    {
        auto const isRepeat = how == Held::forLong;
        QKeyEvent offer(QEvent::ShortcutOverride, key, held, scanCode, 0, 0, {}, isRepeat);
        offer.ignore();
        QApplication::sendEvent(inner, &offer);
        QKeyEvent press(QEvent::KeyPress, key, held, scanCode, 0, 0, {}, isRepeat);
        QApplication::sendEvent(inner, &press);
    }

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
    give(window, Command::textBigger);
    QTest::keyClick(inner, Qt::Key_Period, Qt::ControlModifier | Qt::ShiftModifier);
    QTest::keyClick(inner, Qt::Key_Equal, Qt::ControlModifier);
    EXPECT_EQ(window.performed, (std::vector{Command::toggleHidden, Command::textBigger}));
}

TEST_F(CommandActionsTest, aKeyIsKnownByItsPlaceOnTheKeyboard)
{
    give(window, Command::refresh);
    give(window, Command::toggleHidden);
    give(window, Command::equalizePanes);
    pressAt(27, Qt::Key(0x041A), Qt::ControlModifier);                     // Russian
    pressAt(60, Qt::Key_Greater, Qt::ControlModifier | Qt::ShiftModifier); // US
    pressAt(51, Qt::Key_NumberSign, Qt::ControlModifier);                  // German
    EXPECT_EQ(window.performed, (std::vector{Command::refresh, Command::toggleHidden, Command::equalizePanes}));
    EXPECT_TRUE(inner->keys.empty()) << "a command's key is not typed too";
}

TEST_F(CommandActionsTest, aKeyOfNoCommandGoesToWhatHasTheKeyboard)
{
    pressAt(27, Qt::Key(0x041A), Qt::NoModifier);
    EXPECT_EQ(inner->keys, std::vector{0x041A});
}

TEST_F(CommandActionsTest, aFieldKeepsTheKeysThatItClaims)
{
    give(window, Command::connect);
    inner->claimed = Qt::Key_K;
    pressAt(45, Qt::Key_K, Qt::ControlModifier);
    EXPECT_TRUE(window.performed.empty());
    EXPECT_EQ(inner->keys, std::vector<int>{Qt::Key_K});
}

TEST_F(CommandActionsTest, aHeldKeyRepeatsOnlyWhereThatIsWanted)
{
    give(window, Command::refresh);
    give(window, Command::equalizePanes);
    pressAt(27, Qt::Key_R, Qt::ControlModifier, Held::forLong);
    pressAt(51, Qt::Key_Backslash, Qt::ControlModifier, Held::forLong);
    EXPECT_EQ(window.performed, only(Command::refresh));
    EXPECT_TRUE(inner->keys.empty());
}

/// Without the mark of its letter and without its key.
QString plainTitle(QAction const &item)
{
    auto title = item.text().section(QLatin1Char('\t'), 0, 0);
    return title.remove(QLatin1Char('&'));
}

QStringList itemsOf(QMenu const &menu)
{
    QStringList items;
    for (auto const *item : menu.actions()) {
        if (item->menu())
            items += itemsOf(*item->menu());
        else if (!item->isSeparator())
            items += plainTitle(*menu.menuAction()) + QLatin1Char('/') + plainTitle(*item);
    }
    return items;
}

QStringList rowsOf(Menu menu)
{
    QStringList rows;
    for (auto const &row : commandTable()) {
        if (row.place.menu == menu)
            rows += QString::fromUtf8(titleOf(menu)) + QLatin1Char('/') + QString::fromUtf8(row.title);
    }
    return rows;
}

TEST_F(CommandActionsTest, theMenuBarHasEveryCommandWithAPlaceInItsMenu)
{
    QMenuBar bar;
    actions->fill(bar);
    QStringList shown;
    for (auto const *menu : bar.actions())
        shown += itemsOf(*menu->menu());
    QStringList wanted;
    for (auto const which : menuBar) {
        wanted += rowsOf(which);
        for (auto const below : submenus) {
            if (menuAbove(below) == which)
                wanted += rowsOf(below);
        }
    }
    EXPECT_EQ(shown, wanted);
}

/// Expects each of the items, and of those in the menus below, to have a letter that no other beside it has.
void expectLetters(QList<QAction *> const &items)
{
    QSet<QKeySequence> letters;
    for (auto const *item : items) {
        if (item->isSeparator())
            continue;
        auto const letter = QKeySequence::mnemonic(item->text());
        EXPECT_FALSE(letter.isEmpty()) << item->text().toStdString();
        EXPECT_FALSE(letters.contains(letter)) << item->text().toStdString();
        letters.insert(letter);
        if (item->menu())
            expectLetters(item->menu()->actions());
    }
}

TEST_F(CommandActionsTest, everyItemOfTheMenuBarHasALetterOfItsOwnInItsMenu)
{
    QMenuBar bar;
    actions->fill(bar);
    expectLetters(bar.actions());
}

TEST(MnemonicsTest, aLetterBeginsAWordWhereOneIsFreeAndIsGivenOnce)
{
    auto const titles = QStringLiteral("Select All|Select by Mask…\tS|Fish && &Chips|Sb|Sb|日本");
    auto const given = Mnemonics::given(titles.split(QLatin1Char('|'))).join(QLatin1Char('|'));
    EXPECT_EQ(given, QStringLiteral("&Select All|Select &by Mask…\tS|Fish && &Chips|Sb|Sb|日本"));
}

TEST_F(CommandActionsTest, aMenuShowsTheStatesOfTheMomentInWhichItOpens)
{
    give(window, Command::toggleHidden, {.isChecked = true});
    give(window, Command::refresh, {.isEnabled = false});
    auto *const menu = actions->contextMenu({}, &window);
    menu->popup({});
    EXPECT_TRUE(actions->action(Command::toggleHidden).isChecked());
    EXPECT_FALSE(actions->action(Command::refresh).isEnabled());
    menu->close();
    processPosted();
    // A key asks anew.
    EXPECT_TRUE(actions->action(Command::refresh).isEnabled());
}

TEST_F(CommandActionsTest, anItemThatIsCalledOtherwiseInTheMenuOverAPaneIsTheSameCommand)
{
    give(window, Command::newFolder);
    auto *const menu = actions->contextMenu({}, &window);
    menu->popup({});
    auto *const item = menu->actions().at(1);
    EXPECT_EQ(plainTitle(*item), QStringLiteral("New Folder…"));
    EXPECT_TRUE(item->text().endsWith(QStringLiteral("\tF7")));
    item->trigger();
    EXPECT_EQ(window.performed, only(Command::newFolder));
    menu->close();
    processPosted();
}

TEST_F(CommandActionsTest, anItemOfTheMenuOverAPaneIsDisabledWithItsCommand)
{
    give(window, Command::newFolder, {.isEnabled = false});
    auto *const menu = actions->contextMenu({}, &window);
    menu->popup({});
    EXPECT_FALSE(menu->actions().front()->isEnabled());
    menu->close();
    processPosted();
}

} // namespace
} // namespace tw::test
