#include "Tarnwick/Toolkit/Commands/CommandActions.h"

#include "Tarnwick/Commands/CommandTable.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Commands/CommandKeySequences.h"
#include "Tarnwick/Toolkit/Commands/CommandShortcuts.h"
#include "Tarnwick/Toolkit/Commands/Mnemonics.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

namespace tw {

namespace {

/// An ampersand in a menu marks a letter, unless it is doubled.
QString inMenu(std::string_view title)
{
    return Wording::shown(title).replace(QLatin1Char('&'), QStringLiteral("&&"));
}

QString titleWithKey(CommandRow const &row)
{
    auto const title = inMenu(row.title);
    // Qt shows the keys of an action itself. A pane's key is not one of the action's, which would take it from text
    // fields too.
    return row.keys.owner == KeyOwner::pane ? title + QLatin1Char('\t') + keyTextOf(row) : title;
}

QString toolTipOf(CommandRow const &row)
{
    return Wording::shown(row.toolTip) + QStringLiteral(" (") + keyTextOf(row) + QLatin1Char(')');
}

} // namespace

CommandActions::CommandActions(QWidget &commanded, CommandScope scope, CommandTarget &above)
    : QObject(&commanded), window(commanded), program(above)
{
    for (auto const &row : commandTable()) {
        auto const isAction = !row.title.empty() || row.keys.owner == KeyOwner::shortcut;
        if (isAction && (row.scope == scope || row.scope == CommandScope::anywhere))
            add(row);
    }
    new CommandShortcuts(window, [this](Command command, CommandShortcuts::Press press) {
        auto const isWanted = press == CommandShortcuts::Press::first || rowOf(command).repeat == KeyRepeat::repeats;
        if (isWanted && actions.contains(command))
            action(command).trigger();
    });
}

void CommandActions::add(CommandRow const &row)
{
    auto *const action = new QAction(titleWithKey(row), this);
    if (!row.toolTip.empty())
        action->setToolTip(toolTipOf(row));
    action->setCheckable(row.checkMark == CheckMark::followsState);
    action->setAutoRepeat(row.repeat == KeyRepeat::repeats);
    action->setMenuRole(QAction::NoRole); // its place is the table's
    // For menus to show. In this window CommandShortcuts acts on the keys; in the others, Qt does on those of the
    // program.
    action->setShortcuts(shortcutsOf(row));
    action->setShortcutContext(row.scope == CommandScope::anywhere ? Qt::ApplicationShortcut : Qt::WidgetShortcut);
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
    for (auto const which : menuBar) {
        auto *const menu = newMenu(which, &bar);
        if (menu->isEmpty())
            delete menu;
        else
            bar.addMenu(menu);
    }
    Mnemonics::give(bar.actions());
}

QMenu *CommandActions::newMenu(Menu which, QWidget *parent)
{
    auto *const menu = new QMenu(Wording::shown(titleOf(which)), parent);
    auto group = 0;
    for (auto const &row : commandTable()) {
        if (row.place.menu != which || !actions.contains(row.command))
            continue;
        if (row.place.group != group && !menu->isEmpty())
            menu->addSeparator();
        group = row.place.group;
        menu->addAction(&action(row.command));
    }
    for (auto const below : submenus) {
        if (menuAbove(below) != which)
            continue;
        menu->addSeparator();
        menu->addMenu(newMenu(below, menu));
    }
    Mnemonics::give(menu->actions());
    keepUpToDate(*menu);
    if (which == Menu::window)
        connect(menu, &QMenu::aboutToShow, this, [this, menu] {
            if (onWindowMenu)
                onWindowMenu(*menu);
        });
    return menu;
}

QMenu *CommandActions::contextMenu(ContextSubject const &subject, QWidget *parent)
{
    auto *const menu = new QMenu(parent);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QMenu *copies = nullptr;
    for (auto const &item : contextMenuItems(subject)) {
        if (item.kind == ContextItem::Kind::separator)
            menu->addSeparator();
        else if (item.kind == ContextItem::Kind::item)
            addContextItem(*menu, item);
        else if (item.kind == ContextItem::Kind::openWithMenu)
            addOpenWithMenu(*menu, item);
        else {
            if (!copies)
                copies = menu->addMenu(Wording::shown(copyMenuTitle));
            addContextItem(*copies, item);
        }
    }
    Mnemonics::give(menu->actions());
    if (copies)
        Mnemonics::give(copies->actions());
    keepUpToDate(*menu);
    return menu;
}

/// The applications come when they are known. Another one can be asked for at once.
void CommandActions::addOpenWithMenu(QMenu &menu, ContextItem const &item)
{
    auto *const applications = menu.addMenu(Wording::shown(item.title));
    addContextItem(*applications, {.command = item.command, .title = "Other Application…"});
    if (onOpenWithMenu)
        onOpenWithMenu(*applications);
}

void CommandActions::addContextItem(QMenu &menu, ContextItem const &item)
{
    auto &usual = action(item.command);
    if (item.title.empty()) {
        menu.addAction(&usual);
        return;
    }
    // Called otherwise here, and an action has one title.
    auto const &row = rowOf(item.command);
    auto *const same = menu.addAction(inMenu(item.title) + QLatin1Char('\t') + keyTextOf(row));
    connect(same, &QAction::triggered, &usual, &QAction::trigger);
    connect(&menu, &QMenu::aboutToShow, same, [this, same, &row] {
        auto const state = stateOf(row.command);
        same->setEnabled(state && state->isEnabled);
    });
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
    auto const state = stateOf(row.command);
    action(row.command).setEnabled(state && state->isEnabled);
    action(row.command).setChecked(state && state->isChecked);
}

std::optional<CommandState> CommandActions::stateOf(Command command) const
{
    auto const *const target = targetOf(command);
    return target ? target->stateOf(command) : std::nullopt;
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
