#pragma once

#include "Tarnwick/Operations/Dialogs.h"
#include "Tarnwick/Operations/OpeningServices.h"
#include "Tarnwick/Panes/PaneController.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tw {

class Archives;
class ClaimedNames;
class Connections;
class Transfer;
struct FileToOpen;

/// What an operation is given when its key is pressed. What the pane does afterwards changes nothing about it.
///
/// Threads: main context only.
/// Lifetime: a value. Panes may go while the operation waits.
struct OperationContext {
    Operands operands;
    std::weak_ptr<PaneController> pane; ///< that the key was pressed in
    /// All of the window, that one too: any of them may show what the operation changes.
    std::vector<std::weak_ptr<PaneController>> panes;
    std::shared_ptr<Dialogs> dialogs;
    Operands target = {};               ///< the folder in the other pane, where copies go; no names
    Connections *connections = nullptr; ///< outlives the operation
    std::function<std::shared_ptr<Transfer>()> makeTransfer = {}; ///< one for each operation
    std::function<std::shared_ptr<Archives>()> makeArchives = {}; ///< likewise
    std::function<Task<std::string>()> makeScratchFolder = {};    ///< for local copies; the operation removes it
    std::shared_ptr<ClaimedNames> claims = {};                    ///< one for the program
    OpeningServices opening = {};
    /// Opens a viewer on a file of that place. The status line says why there is none.
    std::function<void(Operands const &where, FileToOpen const &file)> view = {};

    /// Shows on the pane's status line what the operation is doing.
    void say(Text text) const;

    /// Shows on the pane's status line what kept the operation from beginning, or that the user has cancelled it.
    void warn(Text const &text) const;

    /// Says that there is nothing to work on.
    void refuse() const;

    /// Shows why the operation has failed, and ends when the user has seen it. Throws Cancelled if it was called off.
    Task<void> showFailure(std::exception_ptr failure) const;

    /// Keeps the pane's spinner turning until the handle goes, once that takes longer than a moment. The hosts of the
    /// operands and of `other` are asked meanwhile whether they still answer.
    [[nodiscard]] PaneSpinner::Work beginWork(std::shared_ptr<Browser> const &other = nullptr) const;

    /// Every pane that still shows the folder of the operands reads it again. In the pane of the key press the cursor
    /// goes to `select`, if that is not empty.
    void rereadFolder(std::string const &select) const;

    /// Every pane that still shows one of the folders above `path` on the connection of `where` reads it again: a
    /// folder may have been made in it.
    void rereadAbove(Operands where) const;

    /// Where the cursor of the pane of the key press goes when the operands have gone.
    std::string nameSurviving() const;

    /// Every pane that still shows the folder of `where` reads it again, without `gone`. A cursor on one of these goes
    /// to the name that survives them, and in the pane of the key press to `survivor`, if that is not empty.
    void rereadWithout(Operands const &where, std::vector<std::string> const &gone, std::string const &survivor) const;

    /// Removes the marks on the operands wherever they are on show.
    void unmarkOperands() const;
};

/// A command that takes its time, as a coroutine: it asks, works, shows what has failed, and reads again what it
/// changed.
using Operation = Task<void> (*)(OperationContext context);

} // namespace tw
