#pragma once

#include "TWEngine/Runtime/SharedCompletion.h"

namespace tw {

/// A running task that several tasks wait for.
///
/// It starts when it is made and runs to its end even without a waiter. Stopping one waiter affects neither the task
/// nor the other waiters. A cheap value; copies are the same task.
///
/// Threads: all operations may be called from anywhere.
/// Lifetime: the running task keeps its own state; destroying the last handle does not stop it.
/// Errors: what the task throws is thrown to every waiter, now and later.
template <class T>
class SharedTask {
public:
    /// Starts `task` on `executor`, under its own stop token.
    static SharedTask start(std::shared_ptr<Executor> executor, Task<T> task)
    {
        SharedTask shared;
        auto const stop = shared.state->stopSource.get_token();
        spawn({std::move(executor), stop}, run(shared.state, std::move(task)));
        return shared;
    }

    /// Waits for the outcome. Throws what the task threw, or Cancelled if the waiter is stopped.
    Task<T> wait() const { return SharedCompletion<T>::wait(state->completion); }

    /// Asks the task to stop. Its waiters get its outcome: Cancelled unless it was done already.
    void cancel() const { state->stopSource.request_stop(); }

    bool isDone() const { return state->completion->isSettled(); }

    friend bool operator==(SharedTask const &, SharedTask const &) = default;

private:
    struct State {
        std::stop_source stopSource;
        std::shared_ptr<SharedCompletion<T>> const completion = std::make_shared<SharedCompletion<T>>();
    };

    SharedTask() : state(std::make_shared<State>()) {}

    static Task<void> run(std::shared_ptr<State> state, Task<T> task)
    {
        auto outcome = co_await outcomeOf(std::move(task));
        state->completion->settle(std::move(outcome));
    }

    std::shared_ptr<State> state;
};

} // namespace tw
