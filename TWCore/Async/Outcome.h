#pragma once

#include "TWCore/Async/Task.h"

namespace tw {

/// How a task ended, kept until it is time to tell.
template <class T>
struct Outcome {
    struct Nothing {};

    std::optional<std::conditional_t<std::is_void_v<T>, Nothing, T>> value;
    std::exception_ptr failure; ///< set if there is no value

    /// Returns or throws what the task did, once.
    T take()
    {
        if (failure)
            std::rethrow_exception(std::move(failure));
        if constexpr (!std::is_void_v<T>)
            return std::move(*value);
    }
};

/// Runs `work` to its end, whichever that is. Its frame, and with it all that it held, is gone when this answers.
template <class T>
Task<Outcome<T>> outcomeOf(Task<T> work)
{
    Outcome<T> outcome;
    try {
        auto running = std::move(work);
        if constexpr (std::is_void_v<T>) {
            co_await std::move(running);
            outcome.value.emplace();
        } else {
            auto value = co_await std::move(running);
            outcome.value.emplace(std::move(value));
        }
    } catch (...) {
        outcome.failure = std::current_exception();
    }
    co_return outcome;
}

} // namespace tw
