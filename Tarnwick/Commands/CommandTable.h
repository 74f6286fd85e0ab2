#pragma once

#include "Tarnwick/Commands/CommandRow.h"

#include <span>

namespace tw {

/// Every command that works, one row each. Menus, buttons, shortcuts and lists of keys are made from it and from
/// nothing else, so that what is offered is what works, and is called the same wherever it is offered.
std::span<CommandRow const> commandTable();

/// The row of a command.
CommandRow const &rowOf(Command command);

} // namespace tw
