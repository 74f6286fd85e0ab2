#pragma once

#include "Tarnwick/Operations/OperationContext.h"

namespace tw {

/// Asks for a mask, and marks the rows that it matches. A pane that shows another folder by then is left alone.
Task<void> markByMask(OperationContext context);

/// The same, and unmarks them.
Task<void> unmarkByMask(OperationContext context);

} // namespace tw
