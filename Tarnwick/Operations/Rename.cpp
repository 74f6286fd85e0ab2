#include "Tarnwick/Operations/Rename.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "Tarnwick/Operations/ClaimSteps.h"
#include "Tarnwick/Panes/PaneStatus.h"
#include "Tarnwick/Table/NewName.h"

namespace tw {

namespace {

/// A name with a slash would move the entry to another folder.
Task<void> renameWithin(OperationContext context, std::string from, std::string to)
{
    auto where = context.operands;
    if (auto objection = objectionToNewName(to))
        throw FileOperationError::Failed("rename", where.pathOf(from), *std::move(objection));
    where.names = {from, to};
    auto const claim = co_await ClaimSteps::claim(context.claims, "rename", where, ClaimedNames::Use::moved);
    co_await where.browser->rename(where.pathOf(from), where.pathOf(to));
}

} // namespace

Task<void> performRename(OperationContext context, std::string from, std::string to)
{
    auto const where = context.operands;
    if (!where.browser->writer()) {
        context.warn({"%@ is read-only", {where.connection}});
        co_return;
    }
    auto work = context.beginWork();
    auto const outcome = co_await outcomeOf(renameWithin(context, from, to));
    work.reset();
    context.rereadFolder(outcome.failure ? from : to);
    if (outcome.failure)
        co_await context.dialogs->error(PaneStatus::describe(outcome.failure));
}

} // namespace tw
