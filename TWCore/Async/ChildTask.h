#pragma once

#include "TWCore/Async/Outcome.h"

#include <atomic>
#include <memory>

namespace tw {

/// A task that runs beside its parent and does not outlast it: if the parent is stopped, so is the child, and a handle
/// that is dropped stops it as well.
///
/// For two things at a time inside one operation, such as reading both outputs of a program. A task that several wait
/// for, or that outlives its maker, is a SharedTask.
///
/// Threads: start, join and drop it on the parent's executor; `stop` from anywhere.
/// Lifetime: a child that is dropped without `join` is stopped, and its end is not awaited.
template <class T>
class ChildTask {
public:
    /// Starts `task` on the executor of `parent`, never inside the call.
    static ChildTask start(TaskContext const &parent, Task<T> task)
    {
        ChildTask child(parent.stop);
        spawn({parent.executor, child.state->own.get_token()}, run(child.state, std::move(task)));
        return child;
    }

    ChildTask(ChildTask &&) noexcept = default;
    ChildTask &operator=(ChildTask &&) = delete;

    ~ChildTask()
    {
        if (state)
            stop();
    }

    /// Asks the child to stop.
    void stop() const { state->own.request_stop(); }

    /// What the child returned or threw, once it has ended. Called once.
    ///
    /// Cancellation: stopping the caller stops the child, whose end is awaited all the same.
    Task<T> join() const { return join(state); }

private:
    struct State {
        std::stop_source own;
        Outcome<T> outcome;
        /// Null while the child runs and nobody joins; the joining coroutine; or this object once the child has ended.
        std::atomic<void *> meeting = nullptr;
        std::shared_ptr<Executor> home; ///< of the joining coroutine; written before `meeting`
    };

    struct StopChild {
        std::shared_ptr<State> state;

        void operator()() const { state->own.request_stop(); }
    };

    struct Joined {
        std::shared_ptr<State> state;

        bool await_ready() const noexcept { return false; }

        template <class Promise>
        bool await_suspend(std::coroutine_handle<Promise> caller)
        {
            auto const keep = state; // this awaiter lies in the frame that may be resumed from here on
            keep->home = caller.promise().context.executor;
            void *running = nullptr;
            return keep->meeting.compare_exchange_strong(running, caller.address());
        }

        void await_resume() const noexcept {}
    };

    explicit ChildTask(std::stop_token const &parent)
        : state(std::make_shared<State>()),
          withParent(std::make_unique<std::stop_callback<StopChild>>(parent, StopChild{state}))
    {
    }

    static Task<void> run(std::shared_ptr<State> state, Task<T> task)
    {
        auto outcome = co_await outcomeOf(std::move(task));
        state->outcome = std::move(outcome);
        if (auto *const waiting = state->meeting.exchange(state.get()))
            state->home->post([joiner = std::coroutine_handle<>::from_address(waiting)] { joiner.resume(); });
    }

    static Task<T> join(std::shared_ptr<State> state)
    {
        auto const context = co_await currentContext();
        std::stop_callback const passOn(context.stop, StopChild{state});
        co_await Joined{state};
        co_return state->outcome.take();
    }

    std::shared_ptr<State> state;
    std::unique_ptr<std::stop_callback<StopChild>> withParent;
};

} // namespace tw
