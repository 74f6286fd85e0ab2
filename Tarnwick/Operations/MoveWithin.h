#pragma once

#include "Tarnwick/Operations/TransferJob.h"

#include <memory>

namespace tw {

/// Moves within one place by renaming. A file that is to be replaced waits in a staging folder of the target until the
/// new one is there. If the new one cannot get there, the old one is moved back. If its name is taken by then, it stays
/// in the staging folder. A conflict that is not a file over a file is left to the caller.
///
/// Writes to `end` what has moved and what waits, also before a failure, which is thrown. Threads: main context only.
Task<void> moveWithin(std::shared_ptr<TransferJob const> job, std::shared_ptr<TransferEnd> end);

/// True if both sides are no folders.
bool isFileOverFile(NameConflict const &conflict);

} // namespace tw
