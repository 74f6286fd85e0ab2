#pragma once

#include "TWCore/Async/Outcome.h"

namespace tw {

namespace detail {

/// Moves the task that awaits it to another executor, or behind what is queued on its own.
struct HopAwaiter {
    std::shared_ptr<Executor> target;

    bool await_ready() const noexcept { return false; }

    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> caller)
    {
        // The awaiter lies in the frame, which may be running on the other side as soon as it is posted.
        auto const executor = std::move(target);
        caller.promise().context.executor = executor;
        executor->post([caller] { caller.resume(); });
    }

    void await_resume() const noexcept {}
};

} // namespace detail

/// Runs `work` on `executor`, and lets the caller go on where it was.
///
/// The frame of `work` is destroyed on `executor` as well, so that what it held is let go there.
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
