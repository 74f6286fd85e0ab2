#pragma once

#include "TWCore/Async/Task.h"

#include <chrono>

namespace tw {

/// A point of wall time; what a listing's age is measured from. It survives a restart, so it is not the steady clock.
using Timestamp = std::chrono::system_clock::time_point;

/// The difference of two wall times in seconds, as ages and intervals are told.
inline double secondsBetween(Timestamp earlier, Timestamp later)
{
    return std::chrono::duration<double>(later - earlier).count();
}

/// Time, as a collaborator, so that a test can turn it by hand.
///
/// Threads: all operations may be called from anywhere.
class Clock {
public:
    virtual ~Clock() = default;

    /// Wall time. It may jump when the machine's clock is set.
    virtual Timestamp now() const = 0;

    /// Time that only goes forward, for measuring how long something took.
    virtual std::chrono::steady_clock::time_point steadyNow() const = 0;

    /// Ends after `duration` at the earliest; at once if it is not positive. Throws Cancelled when stopped.
    virtual Task<void> sleep(std::chrono::nanoseconds duration) = 0;
};

} // namespace tw
