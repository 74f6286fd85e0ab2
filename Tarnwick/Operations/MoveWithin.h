#pragma once

#include "Tarnwick/Operations/TransferJob.h"

#include <memory>

namespace tw {

/// Moves within one place by renaming. A file that is to be replaced waits in a staging folder of the target until the
/// new one is there. If the new one cannot get there, the old one is moved back. If its name is taken by then, it stays
/// in the staging folder. A conflict that is not a file over a file is left to the caller.
///
/// Writes to `end` what has moved and what waits, also before a failure, which is thrown. Threads: main context only.
/// Cancellation: a host ends the request that was sent, which has at most `mostInRequest` names. What was to be
/// replaced and was not is moved back all the same.
Task<void> moveWithin(std::shared_ptr<TransferJob const> job, std::shared_ptr<TransferEnd> end);

/// A host needs about a millisecond for each, and a cancel waits for the request.
inline constexpr std::size_t mostInRequest = 100;

/// True if both sides are no folders.
bool isFileOverFile(NameConflict const &conflict);

} // namespace tw
