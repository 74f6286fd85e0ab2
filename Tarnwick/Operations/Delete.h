#pragma once

#include "Tarnwick/Operations/OperationContext.h"

namespace tw {

/// Asks, and then moves the operands to the Trash, or on a host deletes them permanently. Shows progress. The cursor
/// goes to the name that survives them.
///
/// Cancellation: by the user, also in the middle of a folder; the status line says how many items have gone.
/// Errors: shown to the user. What was deleted before a failure stays deleted, and the marks on the rest stay. What the
/// Trash does not take is deleted permanently only if the user agrees, by name.
Task<void> deleteOperands(OperationContext context);

} // namespace tw
