#pragma once

#include "Tarnwick/Commands/CommandRow.h"
#include "Tarnwick/Commands/CommandTarget.h"
#include "Tarnwick/Commands/ContextMenu.h"

#include <QList>
#include <QObject>

#include <functional>
#include <unordered_map>

class QAction;
class QMenu;
class QMenuBar;
class QWidget;

namespace tw {

/// The commands of one kind of window as Qt's actions, made from the table: keys, menus and buttons share them.
///
/// An action looks for its target when it is triggered, from what has the keyboard upwards to the window, and then asks
/// the program.
///
/// Lifetime: the window's child. `program` outlives it.
class CommandActions final : public QObject {
public:
    CommandActions(QWidget &window, CommandScope scope, CommandTarget &program);

    /// The key of a command was pressed that cannot be performed now.
    std::function<void()> onRefused;

    /// Adds the applications for the file under the cursor to a menu before its last items, at once or later.
    std::function<void(QMenu &menu)> onOpenWithMenu;

    /// Lists the open windows in the Window menu, each time before it opens.
    std::function<void(QMenu &menu)> onWindowMenu;

    /// The action of a command that has a title.
    QAction &action(Command command) const { return *actions.at(command); }

    /// The actions of commands that work in every window.
    QList<QAction *> everywhere() const;

    /// How the command is offered now; nothing if nobody here knows it.
    std::optional<CommandState> stateOf(Command command) const;

    /// Adds the menus of the table that have commands for this window.
    void fill(QMenuBar &bar);

    /// The menu that opens over a pane; it deletes itself when it closes.
    QMenu *contextMenu(ContextSubject const &subject, QWidget *parent);

private:
    void add(CommandRow const &row);
    QMenu *newMenu(Menu which, QWidget *parent);
    void addContextItem(QMenu &menu, ContextItem const &item);
    void addOpenWithMenu(QMenu &menu, ContextItem const &item);
    void keepUpToDate(QMenu &menu);
    CommandTarget *targetOf(Command command) const;
    void perform(Command command) const;
    void showState(CommandRow const &row) const;

    QWidget &window;
    CommandTarget &program;
    std::unordered_map<Command, QAction *> actions;
};

} // namespace tw
