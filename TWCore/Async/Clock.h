#pragma once

#include "TWCore/Async/Task.h"

#include <chrono>

namespace tw {

/// A point of wall time. Ages of listings are measured with it, since a steady clock does not survive a restart.
using Timestamp = std::chrono::system_clock::time_point;

/// The difference of two wall times in seconds.
inline double secondsBetween(Timestamp earlier, Timestamp later)
{
    return std::chrono::duration<double>(later - earlier).count();
}

/// Time as a collaborator, so that a test can set it.
///
/// Threads: all operations may be called from anywhere.
class Clock {
public:
    virtual ~Clock() = default;

    /// Wall time. It may jump when the machine's clock is set.
    virtual Timestamp now() const = 0;

    /// Time that never goes back, for measuring durations.
    virtual std::chrono::steady_clock::time_point steadyNow() const = 0;

    /// Ends after `duration` at the earliest, or at once if `duration` is not positive. Throws Cancelled when stopped.
    virtual Task<void> sleep(std::chrono::nanoseconds duration) = 0;
};

} // namespace tw
