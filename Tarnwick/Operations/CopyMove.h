#pragma once

#include "Tarnwick/Operations/OperationContext.h"

namespace tw {

/// Asks where to, and copies the operands there. What is nonsense is refused, and what would be written over is asked
/// about, before anything begins.
///
/// Errors: shown to the user, with what is complete, in part or not begun. What has arrived stays.
Task<void> copyOperands(OperationContext context);

/// The same for a move. Within one file system, or one host, it renames; otherwise the source goes when all has
/// arrived, see TransferRun.
Task<void> moveOperands(OperationContext context);

} // namespace tw
