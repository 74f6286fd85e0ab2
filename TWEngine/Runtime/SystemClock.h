#pragma once

#include "TWCore/Async/Clock.h"

namespace tw {

class IoThread;

/// The time of the machine. Its sleeps are timers of the I/O thread.
///
/// Lifetime: `thread` outlives the clock and every sleep.
class SystemClock final : public Clock {
public:
    explicit SystemClock(IoThread &thread) : io(thread) {}

    Timestamp now() const override { return std::chrono::system_clock::now(); }

    std::chrono::steady_clock::time_point steadyNow() const override { return std::chrono::steady_clock::now(); }

    Task<void> sleep(std::chrono::nanoseconds duration) override;

private:
    IoThread &io;
};

} // namespace tw
