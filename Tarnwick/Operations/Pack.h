#pragma once

#include "Tarnwick/Operations/OperationContext.h"

namespace tw {

/// Asks for the name and the format of an archive in the folder of the other pane, and packs the operands into it. A
/// file of that name is replaced after a question.
///
/// Errors: shown to the user. What failed or was cancelled leaves nothing behind.
Task<void> packOperands(OperationContext context);

/// Unpacks the archive under the cursor into a new folder beside what is in the other pane, after a question.
Task<void> unpackArchive(OperationContext context);

} // namespace tw
