#include "Tarnwick/Operations/TransferSteps.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/FailureKind.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/FileOperationError.h"
#include "Tarnwick/Operations/AnswerUntil.h"
#include "Tarnwick/Operations/MoveWithin.h"
#include "Tarnwick/Operations/ProgressThrottle.h"
#include "Tarnwick/Operations/StagingFolder.h"
#include "Tarnwick/Operations/TransferRun.h"
#include "Tarnwick/Operations/TransferWords.h"
#include "Tarnwick/Panes/PaneStatus.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

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

bool isOnePlace(TransferJob const &job)
{
    return job.source.browser->providerRef()->identifier() == job.target.browser->providerRef()->identifier();
}

/// A move ends with the deletion of its source, and nobody can delete a mount point: what is in it would go, and the
/// move fail. Of a host, it is known by its device only. A subvolume has one of its own too, and can be renamed.
void refuseMountPoints(TransferJob const &job, TakenNames::Facts const &facts)
{
    auto const isHost = job.source.browser->host() != nullptr;
    auto const renames = isOnePlace(job) && !isMoveBetweenFileSystems(job, facts);
    if (job.kind == TransferKind::copy || (isHost && renames))
        return;
    auto const found = std::ranges::find_if(facts.source.taken, &FolderFacts::Occupant::isMountPoint);
    if (found != facts.source.taken.end())
        throw FileOperationError::Failed("move", job.source.pathOf(found->name),
                                         "this is a file system of its own, such as a mounted disk, and does not move");
}

/// True if the target has something that is to be written there, as if it were the source under another name. Two
/// spellings of one host, or a host that is this machine, are two places. Others of the names may have changed between
/// the two questions.
bool mayBeOneFolder(TakenNames::Facts const &facts)
{
    std::unordered_map<std::string_view, FolderFacts::Occupant const *> here;
    for (auto const &each : facts.source.taken)
        here.emplace(each.name, &each);
    return std::ranges::any_of(facts.target.taken, [&](auto const &there) {
        auto const found = here.find(there.name);
        return found != here.end() && found->second->kind == there.kind && found->second->size == there.size &&
               found->second->mtime == there.mtime;
    });
}

Task<bool> isSeenIn(Operands folder, StagingFolder probe)
{
    co_await probe.made();
    auto const &path = probe.place().path;
    std::vector const names{path.substr(path.rfind('/') + 1)};
    auto const facts = co_await answerUntilStopped(folder.browser->factsAbout(folder.path, names));
    co_return !facts.taken.empty();
}

/// Whether a folder that is made at the target appears at the source. A move onto itself would delete the only copy.
Task<bool> isOneFolder(OperationContext context, TransferJob job)
{
    if (!job.source.browser->writer())
        co_return false;
    auto const here = co_await currentContext();
    if (here.stop.stop_requested())
        throw Cancelled(); // it came together with the answers
    auto const probe = co_await StagingFolder::begin(job.target);
    auto seen = co_await outcomeOf(isSeenIn(job.source, probe));
    auto const isGone = co_await probe.discard(StagingFolder::Content::nothing);
    if (!isGone) // of which the user hears after a cancel too
        co_await context.dialogs->error(TransferWords::leftBehind({.leftBehind = {probe.place().path}})).withStop({});
    co_return seen.take();
}

ProgressState stateOf(TransferProgress const &progress)
{
    return {.bytes = progress.bytes,
            .total = progress.total,
            .item = progress.item,
            .files = progress.files,
            .totalFiles = progress.totalFiles};
}

void rereadPanes(OperationContext const &context, TransferJob const &job, TransferEnd const &end, Cursor const &cursor)
{
    auto const allGone = end.gone.size() == job.source.names.size();
    auto const asked = context.pane.lock();
    if (!end.gone.empty() || end.isSourceTouched || job.isRename()) // otherwise the source is as it was
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
    if (failureIs<FileOperationError::Cancelled>(end.failure))
        return TransferWords::cancelled(job, end);
    return PaneStatus::describe(end.failure);
}

} // namespace

Task<void> makeMissing(OperationContext context, Operands folder)
{
    auto const wanted = co_await context.dialogs->confirm(TransferWords::offerToCreate(folder));
    if (wanted == Dialogs::Answer::cancel)
        throw Cancelled();
    co_await folder.browser->makeDirectory(folder.path);
    context.rereadAbove(folder);
}

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

Task<TakenNames::Facts> check(OperationContext context, TransferJob job, TransferRefusal::Naming naming)
{
    auto const places = isOnePlace(job) ? TransferRefusal::Places::same : TransferRefusal::Places::different;
    auto facts = co_await TakenNames::ask(job.source, job.target);
    if (facts.target.state == FolderFacts::State::missing)
        co_return facts;
    if (auto const refusal = TransferRefusal::of(facts.source, facts.target, places, naming))
        throw errorOf(*refusal, job);
    refuseMountPoints(job, facts);
    if (!isOnePlace(job) && naming == TransferRefusal::Naming::kept && mayBeOneFolder(facts)) {
        auto const isOne = co_await isOneFolder(context, job);
        if (isOne)
            throw errorOf({Reason::ontoItself, job.source.names.front()}, job);
    }
    co_return facts;
}

bool isMoveBetweenFileSystems(TransferJob const &job, TakenNames::Facts const &facts)
{
    auto const &from = facts.source.way;
    auto const &to = facts.target.way;
    return job.kind == TransferKind::move && isOnePlace(job) && !from.empty() && !to.empty() &&
           from.front().device != to.front().device;
}

Task<TransferPlan> withFreeNames(TransferPlan plan, Operands target, std::vector<std::string> others,
                                 bool takesCasesForOne)
{
    if (plan.keepBoth.empty())
        co_return plan;
    auto const kept = plan.keptNames();
    others.insert(others.end(), kept.begin(), kept.end());
    auto const names = co_await TakenNames::freeNames(target, plan.keepBoth, std::move(others), takesCasesForOne);
    for (std::size_t place = 0; place < names.size(); ++place)
        plan.renamed.push_back({plan.keepBoth[place], names[place]});
    co_return plan;
}

namespace {

/// What is left of a move when a name could not be renamed, since that leads to another file system.
std::optional<TransferJob> leftToCopy(TransferJob job, TransferEnd const &end)
{
    auto const isElsewhere = failureIs<FileOperationError::OtherFileSystem>(end.failure);
    if (!isElsewhere || !job.isRename() || !end.summary.partial.empty())
        return std::nullopt;
    job.plan = job.plan.only(end.summary.untouched);
    job.isMoveBetweenFileSystems = true;
    return job;
}

/// With progress if bytes move.
Task<TransferEnd> performOnce(OperationContext context, TransferJob job, std::stop_token callOff)
{
    auto const here = co_await currentContext();
    std::shared_ptr<Progress> shown;
    auto const link = std::make_shared<std::weak_ptr<TransferRun>>();
    auto const cancel = [link] {
        if (auto const run = link->lock())
            run->cancel();
    };
    if (copies(job))
        shown = context.dialogs->progress(TransferWords::title(job.kind, job.source.names.size()) + "…", cancel);
    auto work = shown ? nullptr : context.beginWork();
    auto const run = std::make_shared<TransferRun>(job, context.makeTransfer(), reporterTo(here.executor, shown));
    *link = run;
    std::stop_callback const calledOff(std::move(callOff), cancel);
    auto end = co_await run->perform();
    work.reset();
    if (shown && !leftToCopy(job, end))
        shown->conclude(conclusion(job, end).english());
    co_return end;
}

void addRenamed(TransferEnd &end, TransferEnd const &renamed)
{
    auto const prepend = [](auto &names, auto const &more) { names.insert(names.begin(), more.begin(), more.end()); };
    prepend(end.gone, renamed.gone);
    prepend(end.summary.complete, renamed.summary.complete);
}

} // namespace

Task<TransferEnd> perform(OperationContext context, TransferJob job, Cursor cursor, std::stop_token callOff)
{
    auto end = co_await performOnce(context, job, callOff);
    if (auto copying = leftToCopy(job, end)) {
        auto copied = co_await performOnce(context, *std::move(copying), callOff);
        addRenamed(copied, end);
        end = std::move(copied);
    }
    if (!end.failure)
        context.unmarkOperands();
    rereadPanes(context, job, end, cursor);
    co_return end;
}

Task<void> tell(OperationContext context, TransferJob job, TransferEnd end)
{
    if (failureIs<FileOperationError::Cancelled>(end.failure)) {
        context.warn(TransferWords::cancelled(job, end));
        auto left = TransferWords::leftByCancel(job, end);
        if (!left.isEmpty())
            co_await context.dialogs->error(std::move(left));
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

Task<TransferEnd> carryOut(OperationContext context, TransferJob job, Cursor cursor)
{
    auto end = co_await perform(context, job, std::move(cursor));
    co_await tell(context, job, end);
    co_return end;
}

} // namespace tw::TransferSteps
