#pragma once

#include "TWCore/Provider/LockedFolders.h"

#include <stop_token>
#include <string>

namespace tw {

/// Deletes a path of this machine for good, with everything below it, however deep. A link is deleted, and not what it
/// leads to. Blocks: for a worker thread.
///
/// Stops at the first failure. What is mounted at the path or below it is such a failure, and stays whole. Locked
/// folders that are left have the rights that they had.
/// Errors: FileOperationError::Failed with the path that could not be deleted; Cancelled.
void removeForGood(std::string const &path, std::stop_token const &stop, LockedFolders locked = LockedFolders::stay);

} // namespace tw
