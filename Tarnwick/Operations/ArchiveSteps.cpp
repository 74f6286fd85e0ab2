#include "Tarnwick/Operations/ArchiveSteps.h"

#include "TWCore/Archives/ArchiveTooLarge.h"
#include "TWCore/Async/FailureKind.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Transfer/HostWork.h"
#include "Tarnwick/Operations/ArchiveWords.h"
#include "Tarnwick/Operations/TransferSteps.h"
#include "Tarnwick/Panes/PaneStatus.h"

namespace tw::ArchiveSteps {

namespace {

/// Performs the work, and again if it was too large and the user wants it all the same.
Task<void> begin(OperationContext context, std::shared_ptr<Archives> archives, Work work, Archives::Reporter reporter)
{
    auto outcome = co_await outcomeOf(work.begin(*archives, reporter));
    auto const tooLarge = failureAs<ArchiveTooLarge>(outcome.failure);
    if (tooLarge) {
        auto const answer = co_await context.dialogs->confirm(ArchiveWords::unpackAllOf(work.title, *tooLarge));
        if (answer == Dialogs::Answer::cancel)
            throw FileOperationError::Cancelled();
        archives->takeAnySize();
        outcome = co_await outcomeOf(work.begin(*archives, reporter));
    }
    outcome.take();
}

/// In one sentence; nothing if it was not cancelled.
std::optional<Text> cancelledWords(std::string const &title, std::exception_ptr const &failure)
{
    if (failureIs<HostWork::MayGoOn>(failure))
        return Text("%@ cancelled: the host may go on with it", {title});
    if (failureIs<FileOperationError::Cancelled>(failure))
        return Text("%@ cancelled", {title});
    return std::nullopt;
}

} // namespace

std::optional<TransferEndpoint> endpointOf(Operands const &place, std::string const &path)
{
    if (!place.browser->writer())
        return std::nullopt;
    return place.endpoint(path);
}

Task<bool> perform(OperationContext context, Work work)
{
    auto const here = co_await currentContext();
    auto const archives = context.makeArchives();
    std::shared_ptr<Progress> shown = context.dialogs->progress(work.title + "…", [weak = std::weak_ptr(archives)] {
        if (auto const running = weak.lock())
            running->cancel();
    });
    auto working = begin(context, archives, work, TransferSteps::reporterTo(here.executor, shown));
    auto const outcome = co_await outcomeOf(std::move(working));
    work.claim.reset();
    auto const cancelled = cancelledWords(work.title, outcome.failure);
    shown->conclude(!outcome.failure ? work.conclusion : PaneStatus::describe(outcome.failure).english());
    shown.reset();
    if (cancelled)
        context.warn(*cancelled);
    else if (outcome.failure)
        co_await context.showFailure(outcome.failure);
    co_return !outcome.failure;
}

Task<void> showArrival(OperationContext context, Operands where, std::string name)
{
    std::vector<std::string> const names{name};
    co_await where.browser->wroteInto(where.path, names);
    auto const asked = context.pane.lock();
    for (auto const &weak : context.panes) {
        if (auto const each = weak.lock())
            each->rereadIfAt(where, each == asked ? std::string() : name);
    }
}

Task<Dialogs::Resolution> replaceAll(OperationContext context, std::vector<NameConflict> taken,
                                     std::function<Dialogs::Confirmation(std::vector<std::string> const &)> question)
{
    std::vector<std::string> names;
    for (auto const &each : taken)
        names.push_back(each.source.name);
    auto const answer = co_await context.dialogs->confirm(question(names));
    if (answer == Dialogs::Answer::cancel)
        co_return std::nullopt;
    co_return std::vector(taken.size(), NameConflict::Answer::replace);
}

} // namespace tw::ArchiveSteps
