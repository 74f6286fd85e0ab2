#pragma once

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/ChildTask.h"
#include "TWCore/Async/Clock.h"

#include <atomic>

namespace tw {

/// Thrown by `withTimeOut` when the time is up.
class TimedOut final : public std::exception {
public:
    char const *what() const noexcept override { return "timed out"; }
};

namespace detail {

/// The state that the work and the timer of a time-out share.
struct TimeOutRace {
    std::stop_source work;
    std::atomic<bool> expired = false;
};

inline Task<void> expireAfter(std::shared_ptr<Clock> clock, std::chrono::nanoseconds limit,
                              std::shared_ptr<TimeOutRace> race)
{
    co_await clock->sleep(limit);
    race->expired = true;
    race->work.request_stop();
}

} // namespace detail

/// Runs `work` for at most `limit`, measured from the `co_await`.
///
/// At the limit the work is stopped, its end is awaited, and TimedOut is thrown in place of its Cancelled. If the work
/// ends with a result or another exception instead, the caller gets that. A stop of the caller stops the work and
/// throws Cancelled. Nothing is left running afterwards.
template <class T>
Task<T> withTimeOut(std::shared_ptr<Clock> clock, std::chrono::nanoseconds limit, Task<T> work)
{
    auto const context = co_await currentContext();
    auto const race = std::make_shared<detail::TimeOutRace>();
    std::stop_callback const passOn(context.stop, [race] { race->work.request_stop(); });
    auto const timer = ChildTask<void>::start(context, detail::expireAfter(std::move(clock), limit, race));

    auto outcome = co_await outcomeOf(std::move(work).withStop(race->work.get_token()));
    timer.stop();
    co_await outcomeOf(timer.join());
    try {
        co_return outcome.take();
    } catch (Cancelled const &) {
        if (race->expired && !context.stop.stop_requested())
            throw TimedOut();
        throw;
    }
}

} // namespace tw
