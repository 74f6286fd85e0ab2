#pragma once

#include "Tarnwick/Operations/OperationContext.h"

namespace tw {

/// Copies members of an archive into the folder `target`, on whatever machine that is. Asks before anything there is
/// replaced.
///
/// Errors: shown to the user.
Task<void> extractOut(OperationContext context, Operands members, Operands target);

} // namespace tw
