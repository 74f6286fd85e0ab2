#pragma once

#include "TWCore/Async/Outcome.h"
#include "TWEngine/Runtime/MainContext.h"

#include <semaphore>

namespace tw::test {

/// Runs a task on the calling thread, which blocks until it ends; answers what it returned or throws what it threw.
///
/// For hosts, which are started and stopped in a test's plain code.
template <class T>
T waitFor(Task<T> task)
{
    struct Keeper {
        static Task<void> keep(std::optional<Outcome<T>> *outcome, Task<T> work)
        {
            auto ended = co_await outcomeOf(std::move(work));
            *outcome = std::move(ended);
        }
    };

    std::counting_semaphore<> woken{0};
    auto const context = std::make_shared<MainContext>([&woken] { woken.release(); });
    std::optional<Outcome<T>> outcome;
    spawn({context, {}}, Keeper::keep(&outcome, std::move(task)));
    while (!outcome) {
        woken.acquire();
        context->runPending();
    }
    context->close();
    return outcome->take();
}

} // namespace tw::test
