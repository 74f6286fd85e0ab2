#include "Tarnwick/Operations/Delete.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/WindowsPath.h"
#include "Tarnwick/Operations/CountPhrase.h"
#include "Tarnwick/Panes/PaneStatus.h"

#include <algorithm>
#include <unordered_set>

namespace tw {

namespace {

/// More names than that do not help to decide.
constexpr std::size_t mostNamesInQuestion = 8;

std::string listOf(Operands const &what)
{
    return onOneLine(WindowsPath::display(what.path)) + ":\n" + Dialogs::describe(what.names, mostNamesInQuestion);
}

Dialogs::Confirmation questionAbout(Operands const &what, bool isReversible)
{
    auto const count = countPhrase(what.names.size());
    if (isReversible)
        return {.title = "Move " + count + " to the Trash?", .message = listOf(what), .okTitle = "Move to Trash"};
    return {.title = "Delete " + count + " on " + withNothingHidden(what.connection) + "?",
            .message =
                "There is no Trash on a remote host. This deletes permanently and cannot be undone.\n\n" + listOf(what),
            .okTitle = "Delete Permanently",
            .danger = Dialogs::Danger::destructive};
}

} // namespace

Task<void> deleteOperands(OperationContext context)
{
    auto const what = context.operands;
    if (what.names.empty()) {
        context.refuse();
        co_return;
    }
    auto const writer = what.browser->writer();
    if (!writer) {
        context.warn({"%@ is read-only", {what.connection}});
        co_return;
    }
    auto const answer = co_await context.dialogs->confirm(questionAbout(what, writer->deleteIsReversible()));
    if (answer == Dialogs::Answer::cancel)
        co_return;
    auto const survivor = context.nameSurviving();
    auto work = context.beginWork();
    auto const outcome = co_await outcomeOf(what.browser->remove(what.paths()));
    work.reset();
    if (!outcome.failure)
        context.rereadWithout(what.names, survivor);
    else
        context.rereadFolder({});
    if (outcome.failure)
        co_await context.dialogs->error(PaneStatus::describe(outcome.failure));
}

} // namespace tw
