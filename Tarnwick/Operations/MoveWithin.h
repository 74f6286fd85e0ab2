#pragma once

#include "Tarnwick/Operations/TransferJob.h"

#include <memory>

namespace tw {

/// Moves within one place by renaming. A file that another one replaces waits in a staging folder of the target until
/// the new one is there, and comes back if that fails. What is not a file over a file is left to the caller.
///
/// `end` learns what has moved, also before a failure, which is thrown. Threads: main context only.
Task<void> moveWithin(std::shared_ptr<TransferJob const> job, std::shared_ptr<TransferEnd> end);

/// True for a file that another file replaces.
bool isFileOverFile(NameConflict const &conflict);

} // namespace tw
