#pragma once

#include "TWCore/Async/Task.h"

namespace tw {

/// How a task ended, as a value.
template <class T>
struct Outcome {
    struct Nothing {};

    std::optional<std::conditional_t<std::is_void_v<T>, Nothing, T>> value;
    std::exception_ptr failure; ///< set if there is no value

    /// Returns what the task returned or throws what it threw. To be called once.
    T take()
    {
        if (failure)
            std::rethrow_exception(std::move(failure));
        if constexpr (!std::is_void_v<T>)
            return std::move(*value);
    }
};

/// Runs `work` until it returns or throws. Its frame, and everything that the frame holds, is destroyed before this
/// returns.
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
