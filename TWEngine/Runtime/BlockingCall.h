#pragma once

#include "TWEngine/Runtime/Completion.h"

#include <type_traits>

namespace tw {

namespace detail {

/// Takes `work` out of where it lies, so that what it holds is gone when the caller goes on.
template <class Result, class Value>
void perform(Completion<Value> &completion, std::move_only_function<Result()> &work)
{
    std::exception_ptr failure;
    try {
        if constexpr (std::is_void_v<Result>) {
            std::exchange(work, nullptr)();
            completion.succeed({});
        } else {
            auto result = std::exchange(work, nullptr)();
            completion.succeed(std::move(result));
        }
    } catch (...) {
        failure = std::current_exception();
    }
    // Behind the handler, which holds the exception too: from here on it is the waiter's alone.
    if (failure)
        completion.fail(std::move(failure));
}

} // namespace detail

/// Runs `work`, which may block, where `post` puts it, and answers what it returned or throws what it threw.
///
/// Cancellation: a stopped caller goes on with Cancelled at once, and work that has not begun is skipped; work that has
/// begun cannot be called off, and its result is dropped.
template <class Result, class Post>
Task<Result> blockingCall(Post post, std::move_only_function<Result()> work)
{
    using Value = std::conditional_t<std::is_void_v<Result>, Done, Result>;
    auto const context = co_await currentContext();
    auto const completion = std::make_shared<Completion<Value>>();
    post([completion, stop = context.stop, work = std::move(work)]() mutable {
        if (stop.stop_requested())
            return; // the waiter has gone on with Cancelled
        detail::perform<Result>(*completion, work);
    });
    if constexpr (std::is_void_v<Result>) {
        co_await Completion<Value>::wait(completion);
    } else {
        auto result = co_await Completion<Value>::wait(completion);
        co_return result;
    }
}

} // namespace tw
