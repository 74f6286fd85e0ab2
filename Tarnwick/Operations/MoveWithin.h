#pragma once

#include "Tarnwick/Operations/TransferJob.h"

#include <memory>

namespace tw {

/// Moves within one place by renaming. Of a file that is to be replaced, the old one or the new one is there at any
/// moment, unless a host copies. A conflict that is not a file over a file is left to the caller.
///
/// Writes to `end` what has moved, also before a failure, which is thrown. Threads: main context only.
/// Cancellation: between requests; one that was sent is waited for, but no longer than some seconds.
Task<void> moveWithin(std::shared_ptr<TransferJob const> job, std::shared_ptr<TransferEnd> end);

/// As many names as one request has if the job is one that the user sees and can cancel: within a fifth of a second,
/// also on a host ten times as slow as one that needs 35 microseconds for each.
inline constexpr std::size_t mostInRequest = 500;

/// True if bytes move: not for a mere renaming, which the user does not see under way.
bool copies(TransferJob const &job);

/// True if both sides are no folders.
bool isFileOverFile(NameConflict const &conflict);

} // namespace tw
