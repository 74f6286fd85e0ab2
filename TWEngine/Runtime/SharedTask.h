#pragma once

#include "TWEngine/Runtime/SharedCompletion.h"

namespace tw {

/// A running task whose outcome several wait for.
///
/// It starts when it is made and runs to its end whether or not anybody waits. A waiter that is stopped leaves
/// alone; the task goes on for the others. A cheap value; copies are the same task.
///
/// Threads: all operations may be called from anywhere.
/// Lifetime: the running task keeps its own state; the last copy of the handle going does not stop it.
/// Errors: what the task throws is thrown to every waiter, now and later.
template <class T>
class SharedTask {
public:
    /// Starts `task` on `executor`, under a stop token of its own.
    static SharedTask start(std::shared_ptr<Executor> executor, Task<T> task)
    {
        SharedTask shared;
        auto const stop = shared.state->stopSource.get_token();
        spawn({std::move(executor), stop}, run(shared.state, std::move(task)));
        return shared;
    }

    /// The outcome, once there is one. Throws what the task threw, or Cancelled when the waiter is stopped.
    Task<T> wait() const { return SharedCompletion<T>::wait(state->completion); }

    /// Asks the task to stop. Its waiters get what it then ends with, which is Cancelled unless it was done already.
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
