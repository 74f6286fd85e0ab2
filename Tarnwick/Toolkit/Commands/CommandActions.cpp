#include "Tarnwick/Toolkit/Commands/CommandActions.h"

#include "Tarnwick/Commands/CommandTable.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Commands/CommandKeySequences.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

namespace tw {

namespace {

QString titleWithKey(CommandRow const &row)
{
    auto const title = Wording::shown(row.title);
    // Qt shows the keys of an action itself. A pane's key is not one of the action's, which would take it from text
    // fields too.
    return row.keys.owner == KeyOwner::pane ? title + QLatin1Char('\t') + keyTextOf(row) : title;
}

} // namespace

CommandActions::CommandActions(QWidget &commanded, CommandScope scope, CommandTarget &above)
    : QObject(&commanded), window(commanded), program(above)
{
    for (auto const &row : commandTable()) {
        if (!row.title.empty() && (row.scope == scope || row.scope == CommandScope::anywhere))
            add(row);
    }
}

void CommandActions::add(CommandRow const &row)
{
    auto *const action = new QAction(titleWithKey(row), this);
    if (!row.toolTip.empty())
        action->setToolTip(Wording::shown(row.toolTip) + QStringLiteral(" (") + keyTextOf(row) + QLatin1Char(')'));
    action->setCheckable(row.checkMark == CheckMark::followsState);
    action->setAutoRepeat(row.repeat == KeyRepeat::repeats);
    action->setMenuRole(QAction::NoRole); // its place is the table's
    action->setShortcuts(shortcutsOf(row));
    if (row.scope == CommandScope::anywhere)
        action->setShortcutContext(Qt::ApplicationShortcut);
    connect(action, &QAction::triggered, this, [this, command = row.command] { perform(command); });
    window.addAction(action);
    actions.emplace(row.command, action);
}

QList<QAction *> CommandActions::everywhere() const
{
    QList<QAction *> found;
    for (auto const &[command, action] : actions) {
        if (rowOf(command).scope == CommandScope::anywhere)
            found += action;
    }
    return found;
}

void CommandActions::fill(QMenuBar &bar)
{
    for (auto const which : {Menu::application, Menu::file, Menu::view, Menu::hosts, Menu::commands}) {
        auto *const menu = fill(new QMenu(Wording::shown(titleOf(which)), &bar), which);
        if (menu->isEmpty())
            delete menu;
        else
            bar.addMenu(menu);
    }
}

QMenu *CommandActions::fill(QMenu *menu, Menu which)
{
    auto group = 0;
    for (auto const &row : commandTable()) {
        if (row.place.menu != which || !actions.contains(row.command))
            continue;
        if (row.place.group != group && !menu->isEmpty())
            menu->addSeparator();
        group = row.place.group;
        menu->addAction(&action(row.command));
    }
    keepUpToDate(*menu);
    return menu;
}

QMenu *CommandActions::contextMenu(QWidget *parent)
{
    auto *const menu = new QMenu(parent);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (auto const &row : commandTable()) {
        if (row.contextMenu == ContextMenu::yes && actions.contains(row.command))
            menu->addAction(&action(row.command));
    }
    keepUpToDate(*menu);
    return menu;
}

/// States are asked for when they are seen. While they are not, all actions are enabled, so that a key is never lost to
/// a state that was true when a menu was last open.
void CommandActions::keepUpToDate(QMenu &menu)
{
    connect(&menu, &QMenu::aboutToShow, this, [this] {
        for (auto const &[command, action] : actions)
            showState(rowOf(command));
    });
    connect(&menu, &QMenu::aboutToHide, this, [this] {
        for (auto const &[command, action] : actions)
            action->setEnabled(true);
    });
}

void CommandActions::showState(CommandRow const &row) const
{
    auto const *const target = targetOf(row.command);
    auto const state = target ? target->stateOf(row.command) : std::nullopt;
    action(row.command).setEnabled(state && state->isEnabled);
    action(row.command).setChecked(state && state->isChecked);
}

CommandTarget *CommandActions::targetOf(Command command) const
{
    auto *const focused = window.focusWidget();
    for (auto *widget = focused ? focused : &window; widget; widget = widget->parentWidget()) {
        auto *const target = dynamic_cast<CommandTarget *>(widget);
        if (target && target->stateOf(command))
            return target;
        if (widget == &window)
            break;
    }
    return program.stateOf(command) ? &program : nullptr;
}

void CommandActions::perform(Command command) const
{
    auto *const target = targetOf(command);
    auto const state = target ? target->stateOf(command) : std::nullopt;
    if (state && state->isEnabled)
        target->perform(command);
    else if (onRefused)
        onRefused();
}

} // namespace tw
