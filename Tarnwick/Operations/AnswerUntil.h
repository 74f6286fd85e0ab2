#pragma once

#include "TWCore/Async/Outcome.h"
#include "TWEngine/Runtime/Completion.h"
#include "TWEngine/Runtime/TimeOut.h"
#include "Tarnwick/Operations/LaterStop.h"

namespace tw {

namespace detail {

template <class T>
using AnswerValue = std::conditional_t<std::is_void_v<T>, Done, T>;

template <class T>
Task<void> answer(std::shared_ptr<Completion<AnswerValue<T>>> answered, Task<T> asking)
{
    auto outcome = co_await outcomeOf(std::move(asking));
    if (outcome.failure) {
        answered->fail(outcome.failure);
        co_return;
    }
    if constexpr (std::is_void_v<T>)
        answered->succeed({});
    else
        answered->succeed(*std::move(outcome.value));
}

} // namespace detail

/// Waits for `asking`, and for no longer than this task is wanted: a place that was asked need not answer.
///
/// Cancellation: at once. `asking` is stopped too, and goes on without a waiter for as long as it takes.
template <class T>
Task<T> answerUntilStopped(Task<T> asking)
{
    using Value = detail::AnswerValue<T>;
    auto const context = co_await currentContext();
    auto const answered = std::make_shared<Completion<Value>>();
    spawn(context, detail::answer<T>(answered, std::move(asking)));
    auto value = co_await Completion<Value>::wait(answered);
    if constexpr (!std::is_void_v<T>)
        co_return value;
}

/// For a question. A person waits for the answer at the end of an operation, and a disk may be dead.
constexpr std::chrono::seconds patienceWithAnswer{3};

/// Like `answerUntilStopped`, and throws TimedOut if there is no answer within `limit`.
template <class T>
Task<T> answerInTime(std::shared_ptr<Clock> clock, std::chrono::nanoseconds limit, Task<T> asking)
{
    return withTimeOut(std::move(clock), limit, answerUntilStopped(std::move(asking)));
}

/// For work that is done after a cancel too. Longer than a disk that answers takes as a rule: what is not done by then
/// is named to the user.
constexpr std::chrono::seconds patienceWithWork{10};

/// Waits for `work`, which takes as long as it takes without a stop.
///
/// Cancellation: `limit` later. `work` is stopped then too, unless it takes no stop, and goes on without a waiter.
template <class T>
Task<T> answerSoonAfterStop(std::shared_ptr<Clock> clock, std::chrono::nanoseconds limit, Task<T> work)
{
    return withLaterStop(std::move(clock), limit, answerUntilStopped(std::move(work)));
}

} // namespace tw
