#pragma once

#include "Tarnwick/Operations/OpenFile.h"

namespace tw {

/// Opens a file of the operands' connection in an editor. A file of a host is fetched first, and each save of the copy
/// goes back to it, see RemoteEditSession; a file that is being edited already gets its editor again.
///
/// Nothing is executed, whatever the file is: programs and scripts open with the editor of plain text.
/// Errors: on the status line of the pane; a failed fetch in a sheet.
Task<void> editFile(OperationContext context, FileToOpen file);

} // namespace tw
