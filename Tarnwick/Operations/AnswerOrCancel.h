#pragma once

#include "Tarnwick/Operations/AnswerUntil.h"
#include "Tarnwick/Operations/OperationContext.h"

namespace tw {

/// A question that takes no longer than this shows nothing. The sheet of work under way waits another 0.3 s before it
/// comes up, so a user who sees one has waited for half a second.
constexpr std::chrono::milliseconds unseenQuestion{200};

namespace detail {

/// Shows a question as work under way, once it takes longer than a moment, and until this task is stopped.
Task<void> showQuestion(OperationContext context, std::string title, std::stop_source ended);

/// Says on the status line that the user does not want it.
void sayCancelled(OperationContext const &context, std::string const &title);

} // namespace detail

/// Waits for `asking`, which asks a place before the operation `title`, such as "Copy 3 items", begins. If that takes
/// long, the user sees it and can cancel it. Nothing of that is on show any more when this ends.
///
/// Cancellation: at once, whatever the place does. `asking` is stopped too, and goes on without a waiter for as long as
/// it takes, so it must write nothing after a stop.
/// Errors: what `asking` throws. If the user cancels, the status line says so, and this throws Cancelled.
template <class T>
Task<T> answerOrCancel(OperationContext context, std::string title, Task<T> asking)
{
    auto const here = co_await currentContext();
    std::stop_source ended; // by the user, or with this task
    std::stop_callback const passOn(here.stop, [ended]() mutable { ended.request_stop(); });
    auto const showing = ChildTask<void>::start(here, detail::showQuestion(context, title, ended));
    auto answer = co_await outcomeOf(answerUntilStopped(std::move(asking)).withStop(ended.get_token()));
    showing.stop();
    co_await outcomeOf(showing.join());
    if (!ended.stop_requested())
        co_return answer.take();
    if (!here.stop.stop_requested())
        detail::sayCancelled(context, title);
    throw Cancelled();
}

} // namespace tw
