#pragma once

#include "TWCore/Async/Clock.h"
#include "TWEngine/Runtime/Completion.h"

#include <map>

namespace tw::test {

/// A clock that only the test moves.
///
/// Threads: one.
class ManualClock final : public Clock {
public:
    Timestamp now() const override { return wall; }

    std::chrono::steady_clock::time_point steadyNow() const override { return steady; }

    Task<void> sleep(std::chrono::nanoseconds duration) override
    {
        auto const alarm = std::make_shared<Completion<Done>>();
        if (duration <= std::chrono::nanoseconds::zero())
            alarm->succeed({});
        else
            alarms.emplace(steady + duration, alarm);
        return sleepFor(alarm);
    }

    void advance(std::chrono::duration<double> duration)
    {
        auto const step = std::chrono::duration_cast<std::chrono::nanoseconds>(duration);
        wall += step;
        steady += step;
        while (!alarms.empty() && alarms.begin()->first <= steady)
            alarms.extract(alarms.begin()).mapped()->succeed({});
    }

private:
    static Task<void> sleepFor(std::shared_ptr<Completion<Done>> alarm) { co_await Completion<Done>::wait(alarm); }

    /// Some moment in 2026, with a fraction of a second.
    Timestamp wall{std::chrono::milliseconds(1'780'000'000'250)};
    std::chrono::steady_clock::time_point steady{std::chrono::hours(1)};
    /// By the time at which they are due; equal times in the order in which they were set.
    std::multimap<std::chrono::steady_clock::time_point, std::shared_ptr<Completion<Done>>> alarms;
};

} // namespace tw::test
