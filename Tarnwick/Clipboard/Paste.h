#pragma once

#include "Tarnwick/Clipboard/Clipboard.h"
#include "Tarnwick/Clipboard/ScratchFile.h"
#include "Tarnwick/Operations/OperationContext.h"

namespace tw {

/// Pastes what is on the clipboard into the folder of the operands. Nothing is overwritten: what has a name that is
/// taken gets another one. Files that were cut, here or in another program, are moved, and the clipboard is emptied
/// when all of them have arrived. Of a text or an image a file is made, whose name is asked for.
///
/// Errors: shown to the user.
Task<void> paste(OperationContext context, std::shared_ptr<Clipboard> clipboard, MakeScratchFile makeScratchFile);

} // namespace tw
