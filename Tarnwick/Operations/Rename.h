#pragma once

#include "Tarnwick/Operations/OperationContext.h"

namespace tw {

/// Renames an entry in the folder of the operands. A pane that is still there shows the new name under its cursor.
///
/// Errors: shown to the user; nothing is overwritten. After a failure the folder is read again with the cursor on the
/// old name, since a lost connection leaves open whether the entry was renamed.
Task<void> performRename(OperationContext context, std::string from, std::string to);

} // namespace tw
