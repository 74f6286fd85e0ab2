#pragma once

#include "Tarnwick/Operations/TransferJob.h"

#include <memory>

namespace tw {

/// Moves within one place by renaming. A file that is to be replaced waits in a staging folder of the target until the
/// new one is there. If the new one cannot get there, the old one is moved back. If its name is taken by then, it stays
/// in the staging folder. A conflict that is not a file over a file is left to the caller.
///
/// Writes to `end` what has moved and what waits, also before a failure, which is thrown. Threads: main context only.
/// Cancellation: between requests; one that was sent to a host is waited for. What was to be replaced and was not is
/// moved back all the same.
Task<void> moveWithin(std::shared_ptr<TransferJob const> job, std::shared_ptr<TransferEnd> end);

/// As many names as one request has if the job is one that the user sees and can cancel. A host needs about a
/// millisecond for each.
inline constexpr std::size_t mostInRequest = 100;

/// True if bytes move: not for a mere renaming, which the user does not see under way.
bool copies(TransferJob const &job);

/// True if both sides are no folders.
bool isFileOverFile(NameConflict const &conflict);

} // namespace tw
