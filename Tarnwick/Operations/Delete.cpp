#include "Tarnwick/Operations/Delete.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/WindowsPath.h"
#include "Tarnwick/Operations/CountPhrase.h"

#include <algorithm>
#include <iterator>
#include <optional>
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

/// What is asked when the Trash has refused something: these are all that are still there.
Dialogs::Confirmation questionWithoutTrash(Operands const &left, FileOperationError::NoTrash const &why)
{
    return {.title = "Delete " + countPhrase(left.names.size()) + " permanently?",
            .message = "The Trash does not take " + onOneLine(why.path) + ": " + onOneLine(why.detail) +
                       "\n\nThis deletes permanently and cannot be undone.\n\n" + listOf(left),
            .okTitle = "Delete Permanently",
            .danger = Dialogs::Danger::destructive};
}

std::optional<FileOperationError::NoTrash> refusalOfTrash(std::exception_ptr const &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (FileOperationError::NoTrash const &refusal) {
        return refusal;
    } catch (...) {
        return std::nullopt;
    }
}

/// The operands that are still there. If the place does not say, all of them may be.
Task<Operands> leftOf(Operands what)
{
    auto const facts = co_await outcomeOf(what.browser->factsAbout(what.path, what.names));
    if (!facts.value)
        co_return what;
    what.names.clear();
    for (auto const &each : facts.value->taken)
        what.names.push_back(each.name);
    co_return what;
}

std::vector<std::string> goneFrom(Operands const &what, Operands const &left)
{
    std::unordered_set<std::string_view> const still(left.names.begin(), left.names.end());
    std::vector<std::string> gone;
    std::ranges::copy_if(what.names, std::back_inserter(gone), [&](auto const &name) { return !still.contains(name); });
    return gone;
}

/// Deletes, and for good what the Trash refuses, if the user wants that. Nothing is thrown but Cancelled.
Task<std::exception_ptr> removeAll(OperationContext context)
{
    auto const what = context.operands;
    auto const survivor = context.nameSurviving();
    auto work = context.beginWork();
    auto outcome = co_await outcomeOf(what.browser->remove(what.paths()));
    if (!outcome.failure) {
        context.rereadWithout(what, what.names, survivor);
        co_return nullptr;
    }
    auto const left = co_await leftOf(what);
    work.reset();
    context.rereadWithout(what, goneFrom(what, left), {});
    auto const refusal = refusalOfTrash(outcome.failure);
    if (!refusal || left.names.empty())
        co_return outcome.failure;
    auto const answer = co_await context.dialogs->confirm(questionWithoutTrash(left, *refusal));
    if (answer == Dialogs::Answer::cancel)
        co_return nullptr;
    work = context.beginWork();
    auto const removed = co_await outcomeOf(what.browser->removePermanently(left.paths()));
    work.reset();
    auto const still = co_await leftOf(left);
    context.rereadWithout(what, goneFrom(left, still), still.names.empty() ? survivor : std::string());
    co_return removed.failure;
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
    auto const failure = co_await removeAll(context);
    if (failure)
        co_await context.showFailure(failure);
}

} // namespace tw
