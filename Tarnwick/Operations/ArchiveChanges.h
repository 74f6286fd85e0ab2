#pragma once

#include "Tarnwick/Operations/FileDrag.h"
#include "Tarnwick/Operations/OperationContext.h"

namespace tw {

/// Asks, and then deletes the operands from the archive of this machine that they are members of.
///
/// Errors: shown to the user. The archive then is as it was.
Task<void> deleteFromArchive(OperationContext context);

/// Adds files of any machine to the archive of this machine that the operands of `context` lie in, in the folder on
/// show. Asks before a member is replaced. Files of a host are copied into a scratch folder for it.
///
/// Errors: as above.
Task<void> addToArchive(OperationContext context, FileDrag files);

/// The same for files of this machine, wherever they lie.
Task<void> addPathsToArchive(OperationContext context, std::vector<std::string> paths);

} // namespace tw
