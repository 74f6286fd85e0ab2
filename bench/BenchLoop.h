#pragma once

#include "TWCore/Async/Outcome.h"
#include "TWEngine/Runtime/MainContext.h"

#include <semaphore>

namespace tw::bench {

/// A main context without a window: the calling thread is the main thread, as in the program.
class BenchLoop {
public:
    /// Runs a task on this thread, and what it waits for elsewhere; answers what it returned.
    template <class T>
    T run(Task<T> task)
    {
        std::optional<Outcome<T>> outcome;
        spawn({context, {}}, keepOutcome(&outcome, std::move(task)));
        while (!outcome) {
            woken.acquire();
            context->runPending();
        }
        return outcome->take();
    }

private:
    template <class T>
    static Task<void> keepOutcome(std::optional<Outcome<T>> *outcome, Task<T> task)
    {
        auto ended = co_await outcomeOf(std::move(task));
        *outcome = std::move(ended);
    }

    std::counting_semaphore<> woken{0};
    std::shared_ptr<MainContext> const context = std::make_shared<MainContext>([this] { woken.release(); });
};

} // namespace tw::bench
