#pragma once

#include "Tarnwick/Commands/Command.h"
#include "Tarnwick/Operations/OperationContext.h"

namespace tw {

/// The operation that performs a command; null if the command is none.
Operation operationOf(Command command);

} // namespace tw
