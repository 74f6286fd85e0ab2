#pragma once

#include "Tarnwick/Operations/OperationContext.h"

namespace tw {

/// Asks for a name, and creates a folder of that name in the folder of the operands. A pane that is still there shows
/// it under its cursor; wherever the user has gone meanwhile, the pane stays.
///
/// Errors: shown to the user. After a failure the folder is read again, since a lost connection leaves open whether the
/// new one was created.
Task<void> newFolder(OperationContext context);

} // namespace tw
