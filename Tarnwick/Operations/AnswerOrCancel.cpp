#include "Tarnwick/Operations/AnswerOrCancel.h"

#include "TWCore/Model/LowerCased.h"

namespace tw::detail {

Task<void> showQuestion(OperationContext context, std::string title, std::stop_source ended)
{
    auto const clock = context.operands.browser->clockRef();
    co_await clock->sleep(unseenQuestion);
    auto const shown =
        context.dialogs->progress(title + ": asking what is there…", [ended]() mutable { ended.request_stop(); });
    co_await Completion<Done>::wait(std::make_shared<Completion<Done>>());
}

void sayCancelled(OperationContext const &context, std::string const &title)
{
    // A name behind the first word stays as it is.
    context.warn({"%@ cancelled", {lowerCased(title.substr(0, 1)) + title.substr(1)}});
}

} // namespace tw::detail
