#pragma once

#include "TWCore/Async/Outcome.h"
#include "TWEngine/Runtime/MainContext.h"

#include <semaphore>

namespace tw::test {

/// Runs a task on the calling thread and blocks until it ends. Returns its result or throws its exception.
///
/// For hosts, which plain code of a test starts and stops.
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
