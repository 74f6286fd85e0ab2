#pragma once

#include "TWCore/Async/ChildTask.h"
#include "TWCore/Async/Clock.h"
#include "TWEngine/Runtime/Completion.h"

namespace tw {

namespace detail {

inline Task<void> stopLater(std::shared_ptr<Clock> clock, std::chrono::nanoseconds delay,
                            std::shared_ptr<Completion<Done>> stopped, std::stop_source later)
{
    co_await Completion<Done>::wait(stopped);
    co_await clock->sleep(delay);
    later.request_stop();
}

} // namespace detail

/// Runs `work`, which hears a stop of this task `delay` later. For what has to be done after a cancel too, where a dead
/// disk must not hold the cancel. Without a stop, `work` has no limit of time.
template <class T>
Task<T> withLaterStop(std::shared_ptr<Clock> clock, std::chrono::nanoseconds delay, Task<T> work)
{
    auto const context = co_await currentContext();
    auto const stopped = std::make_shared<Completion<Done>>();
    std::stop_callback const passOn(context.stop, [stopped] { stopped->succeed({}); });
    std::stop_source const later;
    auto const timer = ChildTask<void>::start({.executor = context.executor, .stop = {}},
                                              detail::stopLater(std::move(clock), delay, stopped, later));
    auto outcome = co_await outcomeOf(std::move(work).withStop(later.get_token()));
    timer.stop();
    co_await outcomeOf(timer.join());
    co_return outcome.take();
}

} // namespace tw
