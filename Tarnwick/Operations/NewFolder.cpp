#include "Tarnwick/Operations/NewFolder.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Operations/ClaimSteps.h"
#include "Tarnwick/Panes/PaneStatus.h"
#include "Tarnwick/Table/NewName.h"

namespace tw {

namespace {

Dialogs::Prompt questionAbout(Operands const &where)
{
    return {.title = "New folder",
            .message = "Create in " + withNothingHidden(where.connection) + ":" + onOneLine(where.path),
            .initial = "",
            .okTitle = "Create",
            .objection = objectionToNewName};
}

Task<void> make(OperationContext context, std::string name)
{
    auto where = context.operands;
    where.names = {name};
    auto const claim = co_await ClaimSteps::claim(context.claims, "create folder", where, ClaimedNames::Use::written);
    co_await where.browser->makeDirectory(where.pathOf(name));
}

} // namespace

Task<void> newFolder(OperationContext context)
{
    auto const where = context.operands;
    auto const name = co_await context.dialogs->prompt(questionAbout(where));
    if (!name)
        co_return;
    if (!where.browser->writer()) {
        context.warn({"%@ is read-only", {where.connection}});
        co_return;
    }
    auto work = context.beginWork();
    auto const outcome = co_await outcomeOf(make(context, *name));
    work.reset();
    context.rereadFolder(outcome.failure ? std::string() : *name);
    if (outcome.failure)
        co_await context.dialogs->error(PaneStatus::describe(outcome.failure));
}

} // namespace tw
