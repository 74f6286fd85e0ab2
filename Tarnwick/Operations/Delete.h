#pragma once

#include "Tarnwick/Operations/OperationContext.h"

namespace tw {

/// Asks, and then moves the operands to the Trash, or on a host deletes them for good. The cursor goes to the name that
/// survives them.
///
/// Errors: shown to the user. What was deleted before a failure stays deleted, and the marks on the rest stay. What the
/// Trash does not take is deleted for good only if the user says so, by name.
Task<void> deleteOperands(OperationContext context);

} // namespace tw
