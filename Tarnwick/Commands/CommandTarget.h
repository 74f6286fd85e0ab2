#pragma once

#include "Tarnwick/Commands/Command.h"

#include <optional>

namespace tw {

/// How a command is offered now.
struct CommandState {
    bool isEnabled = true;
    bool isChecked = false; ///< for commands whose row asks for a check mark
};

/// Something that commands act on: a window, a viewer, the program.
///
/// The target of a command is looked for from what has the keyboard upwards, and is the first that answers a state, so
/// that the same command acts on a pane in one window and on a viewer in another.
///
/// Threads: main context only.
class CommandTarget {
public:
    virtual ~CommandTarget() = default;

    /// Nothing: this target does not know the command, and the next target is asked.
    virtual std::optional<CommandState> stateOf(Command command) const = 0;

    /// Performs a command for which `stateOf` answers that it is enabled.
    virtual void perform(Command command) = 0;
};

} // namespace tw
