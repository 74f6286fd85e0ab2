#include "Tarnwick/Operations/TransferSteps.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/FileOperationError.h"
#include "Tarnwick/Operations/MoveWithin.h"
#include "Tarnwick/Operations/ProgressThrottle.h"
#include "Tarnwick/Operations/TransferRun.h"
#include "Tarnwick/Operations/TransferWords.h"
#include "Tarnwick/Panes/PaneStatus.h"

#include <algorithm>

namespace tw::TransferSteps {

namespace {

using Reason = TransferRefusal::Reason;

FileOperationError::Failed errorOf(TransferRefusal const &refusal, TransferJob const &job)
{
    auto const operation = job.kind == TransferKind::copy ? "copy" : "move";
    switch (refusal.reason) {
    case Reason::targetIsMissing:
        return {operation, job.target.path, "there is no such folder"};
    case Reason::targetIsNoFolder:
        return {operation, job.target.path, "this is a file, and no folder"};
    case Reason::intoItself:
        return {operation, job.source.pathOf(refusal.name), "a folder cannot go into itself"};
    case Reason::ontoItself:
        return {operation, job.source.pathOf(refusal.name), "it is there already: source and target are the same"};
    }
    return {operation, job.target.path, ""};
}

bool isCancelled(std::exception_ptr const &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (FileOperationError::Cancelled const &) {
        return true;
    } catch (...) {
        return false;
    }
}

/// Whether bytes move: all but what is only renamed.
bool copies(TransferJob const &job)
{
    return !job.isRename() || !std::ranges::all_of(job.plan.replace, isFileOverFile);
}

ProgressState stateOf(TransferProgress const &progress)
{
    return {.bytes = progress.bytes,
            .total = progress.total,
            .item = progress.item,
            .files = progress.files,
            .totalFiles = progress.totalFiles};
}

/// Takes reports on any thread, and shows some of them on the main context as long as there is something to show.
Transfer::Reporter reporterTo(std::shared_ptr<Executor> main, std::weak_ptr<Progress> shown)
{
    return [main = std::move(main), shown = std::move(shown),
            throttle = std::make_shared<ProgressThrottle>()](TransferProgress const &progress) {
        if (!throttle->shouldReport(progress))
            return;
        main->post([shown, state = stateOf(progress)] {
            if (auto const still = shown.lock())
                still->update(state);
        });
    };
}

void rereadPanes(OperationContext const &context, TransferJob const &job, TransferEnd const &end, Cursor const &cursor)
{
    auto const allGone = end.gone.size() == job.source.names.size();
    auto const asked = context.pane.lock();
    if (!end.gone.empty() || end.sourceFailure || job.isRename()) // otherwise the source is as it was
        context.rereadWithout(job.source, end.gone, allGone ? cursor.atSource : std::string());
    for (auto const &weak : context.panes) {
        if (auto const each = weak.lock())
            each->rereadIfAt(job.target, each == asked ? cursor.atTarget : std::string());
    }
}

/// How it has ended, in one sentence.
Text conclusion(TransferJob const &job, TransferEnd const &end)
{
    if (!end.failure) {
        auto kept = TransferWords::kept(end);
        return kept.isEmpty() ? TransferWords::done(job) : kept;
    }
    if (isCancelled(end.failure))
        return TransferWords::cancelled(job.kind, job.source.names.size(), end.summary);
    return PaneStatus::describe(end.failure);
}

Task<void> tell(OperationContext context, TransferJob job, TransferEnd end)
{
    if (end.failure && isCancelled(end.failure)) {
        context.warn(TransferWords::cancelled(job.kind, job.source.names.size(), end.summary));
        co_return;
    }
    if (end.failure) {
        co_await context.dialogs->error(TransferWords::failed(end), end.summary.words);
        co_return;
    }
    auto kept = TransferWords::kept(end);
    if (!kept.isEmpty())
        co_await context.dialogs->error(std::move(kept));
}

} // namespace

Task<TakenNames::Facts> check(OperationContext context, TransferJob job, TransferRefusal::Naming naming)
{
    auto const isOnePlace =
        job.source.browser->providerRef()->identifier() == job.target.browser->providerRef()->identifier();
    auto const places = isOnePlace ? TransferRefusal::Places::same : TransferRefusal::Places::different;
    auto facts = co_await TakenNames::ask(job.source, job.target);
    if (facts.target.state == FolderFacts::State::missing) {
        auto const wanted = co_await context.dialogs->confirm(TransferWords::offerToCreate(job.target));
        if (wanted == Dialogs::Answer::cancel)
            throw Cancelled();
        co_await job.target.browser->makeDirectory(job.target.path);
        auto again = co_await TakenNames::ask(job.source, job.target);
        facts = std::move(again);
    }
    if (auto const refusal = TransferRefusal::of(facts.source, facts.target, places, naming))
        throw errorOf(*refusal, job);
    co_return facts;
}

Task<TransferPlan> withFreeNames(TransferPlan plan, Operands target, bool takesCasesForOne)
{
    if (plan.keepBoth.empty())
        co_return plan;
    auto const names = co_await TakenNames::freeNames(target, plan.keepBoth, plan.keptNames(), takesCasesForOne);
    for (std::size_t place = 0; place < names.size(); ++place)
        plan.renamed.push_back({plan.keepBoth[place], names[place]});
    co_return plan;
}

Task<TransferEnd> carryOut(OperationContext context, TransferJob job, Cursor cursor)
{
    auto const here = co_await currentContext();
    std::shared_ptr<Progress> shown;
    auto const link = std::make_shared<std::weak_ptr<TransferRun>>();
    if (copies(job))
        shown = context.dialogs->progress(TransferWords::title(job.kind, job.source.names.size()) + "…", [link] {
            if (auto const run = link->lock())
                run->cancel();
        });
    auto work = shown ? nullptr : context.beginWork();
    auto const run = std::make_shared<TransferRun>(job, context.makeTransfer(), reporterTo(here.executor, shown));
    *link = run;
    auto end = co_await run->perform();
    work.reset();
    if (shown)
        shown->conclude(conclusion(job, end).english());
    shown.reset();
    if (!end.failure)
        context.unmarkOperands();
    rereadPanes(context, job, end, cursor);
    co_await tell(context, job, end);
    co_return end;
}

} // namespace tw::TransferSteps
