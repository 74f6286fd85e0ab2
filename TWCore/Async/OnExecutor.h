#pragma once

#include "TWCore/Async/Outcome.h"

namespace tw {

namespace detail {

/// Moves the awaiting task to `target`. If the task runs there already, it goes behind the work that is queued.
struct HopAwaiter {
    std::shared_ptr<Executor> target;

    bool await_ready() const noexcept { return false; }

    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> caller)
    {
        // The awaiter is part of the frame, which may run on the target as soon as it is posted.
        auto const executor = std::move(target);
        caller.promise().context.executor = executor;
        executor->post([caller] { caller.resume(); });
    }

    void await_resume() const noexcept {}
};

} // namespace detail

/// Runs `work` on `executor` and resumes the caller on the caller's executor.
///
/// The frame of `work` is destroyed on `executor` too, with everything that it holds.
template <class T>
Task<T> onExecutor(std::shared_ptr<Executor> executor, Task<T> work)
{
    auto const home = co_await currentContext();
    co_await detail::HopAwaiter{std::move(executor)};
    auto outcome = co_await outcomeOf(std::move(work));
    co_await detail::HopAwaiter{home.executor};
    co_return outcome.take();
}

} // namespace tw
