#include "Tarnwick/Operations/TransferRun.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/FailureKind.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Transfer/HostWork.h"
#include "Tarnwick/Operations/AnswerUntil.h"
#include "Tarnwick/Operations/Arrivals.h"
#include "Tarnwick/Operations/MoveWithin.h"
#include "Tarnwick/Operations/NamesWithout.h"
#include "Tarnwick/Operations/StagingFolder.h"

#include <unordered_set>

namespace tw {

namespace {

using Names = std::vector<std::string>;

void append(Names &to, Names const &names)
{
    to.insert(to.end(), names.begin(), names.end());
}

/// The folders that go into a folder of their name.
std::unordered_set<std::string> mergedBy(TransferPlan const &plan)
{
    std::unordered_set<std::string> merged;
    for (auto const &each : plan.replace) {
        if (each.comparison() == NameConflict::Comparison::folders)
            merged.insert(each.source.name);
    }
    return merged;
}

Survey::Detail detailFor(TransferPlan const &plan)
{
    return mergedBy(plan).empty() ? Survey::Detail::sums : Survey::Detail::nodes;
}

/// The failure of a renaming out of a staging folder, with the path at the target: the staging folder goes.
std::exception_ptr atTarget(std::exception_ptr const &failure, TransferJob const &renaming)
{
    auto const failed = failureAs<FileOperationError::Failed>(failure);
    auto const &staging = renaming.source.path;
    if (!failed || !failed->path.starts_with(staging + "/"))
        return failure;
    auto path = renaming.target.pathOf(failed->path.substr(staging.size() + 1));
    return std::make_exception_ptr(FileOperationError::Failed(failed->operation, std::move(path), failed->detail));
}

/// Whether a copy is what the user was shown, and no part of it.
bool isCopyOf(Survey::Part const &copy, FolderFacts::Occupant const &source)
{
    return copy.files == 1 && copy.folders == 0 && (source.kind != EntryKind::file || copy.bytes == source.size);
}

} // namespace

TransferRun::TransferRun(TransferJob what, std::shared_ptr<Transfer> with, Transfer::Reporter reporter)
    : job(std::make_shared<TransferJob const>(std::move(what))),
      transfer(std::move(with)),
      tally(std::move(reporter), std::shared_ptr<TransferSummary>(end, &end->summary))
{
}

Task<TransferEnd> TransferRun::perform()
{
    return performHere(shared_from_this());
}

void TransferRun::cancel()
{
    stop.request_stop();
    transfer->cancel();
}

void TransferRun::throwIfCancelled() const
{
    if (stop.stop_requested())
        throw FileOperationError::Cancelled();
}

Task<TransferEnd> TransferRun::performHere(Self self)
{
    auto const here = co_await currentContext();
    std::stop_callback const passOn(here.stop, [self] { self->cancel(); });
    auto const outcome = co_await outcomeOf(performSteps(self).withStop(self->stop.get_token()));
    self->tally.end();
    auto end = *self->end;
    end.failure = outcome.failure;
    if (end.failure && self->stop.stop_requested())
        end.failure = std::make_exception_ptr(FileOperationError::Cancelled());
    auto begun = end.summary.complete;
    append(begun, end.summary.partial);
    end.summary.untouched = namesWithout(self->job->plan.allNames(), begun);
    co_return end;
}

Task<void> TransferRun::performSteps(Self self)
{
    if (!self->job->isRename()) {
        co_await copyAndRemove(self, self->job->plan);
        co_return;
    }
    auto const rounds = self->job->plan.rounds(self->job->targetTakesCasesForOne);
    for (auto const &round : rounds) {
        auto const job = std::make_shared<TransferJob>(*self->job);
        job->plan = round;
        co_await moveWithin(job, self->end);
    }
    TransferPlan merged;
    for (auto const &each : self->job->plan.replace) {
        if (!isFileOverFile(each))
            merged.replace.push_back(each);
    }
    if (!merged.isEmpty())
        co_await copyAndRemove(self, std::move(merged));
}

Task<void> TransferRun::copyAndRemove(Self self, TransferPlan plan)
{
    auto const removes = self->job->kind == TransferKind::move && self->job->source.browser->writer();
    Survey before;
    if (removes) {
        auto surveyed = co_await survey(self, self->job->source, plan.allNames(), Survey::Detail::sums);
        before = std::move(surveyed);
    }
    Arrivals arrivals(plan, self->job->targetTakesCasesForOne);
    auto const steps = CopyStep::of(*self->job, plan);
    self->tally.expect(steps);
    for (auto const &step : steps) {
        self->throwIfCancelled();
        arrivals.forgetReplaced(step.plan);
        if (step.isStaged) {
            auto arrived = co_await copyStaged(self, step.plan);
            arrivals.staged.parts.merge(arrived.parts);
            continue;
        }
        co_await copyNames(self, step.plan.keptNames(), self->job->target);
        append(arrivals.direct, step.plan.keptNames());
    }
    if (!removes)
        co_return;
    auto target = co_await survey(self, self->job->target, arrivals.direct, detailFor(plan));
    target.parts.merge(arrivals.staged.parts);
    co_await removeArrived(self, std::move(plan),
                           {.before = std::move(before), .after = {}, .target = std::move(target)});
}

/// The result is what has arrived, if it is a move.
Task<Survey> TransferRun::copyStaged(Self self, TransferPlan plan)
{
    auto const staging = co_await StagingFolder::begin(self->job->target);
    auto publishing = copyAndPublish(self, staging, std::move(plan));
    auto arrived = co_await outcomeOf(std::move(publishing));
    auto const path = staging.place().path;
    // `publish` leaves it behind if a renaming may be under way: what is renamed must not be deleted at the same time.
    if (!namesWithout({path}, self->end->leftBehind).empty()) {
        auto const isGone = co_await staging.discard(StagingFolder::Content::copies);
        if (!isGone)
            self->end->leftBehind.push_back(path);
    }
    co_return arrived.take();
}

/// The result is what has arrived, if it is a move.
Task<Survey> TransferRun::copyAndSurvey(Self self, Operands staging, Names names)
{
    co_await copyNames(self, names, staging);
    if (self->job->kind == TransferKind::copy)
        co_return Survey();
    auto surveyed = co_await survey(self, staging, names, Survey::Detail::sums);
    co_return surveyed;
}

Task<Survey> TransferRun::copyAndPublish(Self self, StagingFolder folder, TransferPlan plan)
{
    co_await folder.made();
    auto const staging = folder.place();
    auto const names = plan.allNames();
    auto &sum = self->end->summary;
    auto const filesBefore = sum.files;
    auto const wereFilesKnown = sum.areFilesKnown;
    auto copied = co_await outcomeOf(copyAndSurvey(self, staging, names));
    auto const whole = plan.only(sum.complete);
    auto const filesCopied = std::exchange(sum.files, filesBefore);
    auto const areCopiesKnown = std::exchange(sum.areFilesKnown, wereFilesKnown);
    self->tally.forget(names); // the staging folder goes, with all that is still in it
    if (copied.failure) {
        auto publishing = publishWhole(self, staging, whole);
        co_await outcomeOf(withLaterStop(staging.browser->clockRef(), patienceWithWork, std::move(publishing)));
    }
    auto arrived = copied.take();
    auto const published = co_await outcomeOf(publish(self, staging, plan));
    auto const hasFilesOnly = plan.free.empty() && plan.keepBoth.empty();
    if (published.failure || hasFilesOnly) {
        self->tally.count(plan, arrived);
    } else {
        sum.files = filesCopied;
        sum.areFilesKnown = areCopiesKnown;
    }
    if (published.failure)
        std::rethrow_exception(published.failure);
    co_return arrived;
}

/// Gives names of the staging folder their names in the target. If nobody knows which of them have got them, the folder
/// is left behind.
Task<void> TransferRun::publish(Self self, Operands staging, TransferPlan plan)
{
    auto const job = std::make_shared<TransferJob>(*self->job);
    job->isMoveBetweenFileSystems = true; // a part of a copy, and can be cancelled as such
    job->source = staging;
    job->plan = std::move(plan);
    auto const named = std::make_shared<TransferEnd>();
    auto const moved = co_await outcomeOf(moveWithin(job, named));
    append(self->end->summary.complete, named->gone);
    append(self->end->summary.partial, named->summary.partial);
    if (!named->summary.areFilesKnown) {
        self->end->summary.areFilesKnown = false;
        self->end->leftBehind.push_back(staging.path);
    }
    if (moved.failure)
        std::rethrow_exception(atTarget(moved.failure, *job));
}

/// Publishes what was whole when the copy ended before its end. Nothing replaces a file without having been looked at.
/// After a cancel that must not take long.
Task<void> TransferRun::publishWhole(Self self, Operands staging, TransferPlan plan)
{
    auto const names = plan.allNames();
    if (names.empty())
        co_return;
    self->tally.tell("looking at what has arrived");
    auto looking = staging.browser->survey(staging.path, names, Survey::Detail::sums);
    if (self->stop.stop_requested())
        looking = answerInTime(staging.browser->clockRef(), patienceWithAnswer, std::move(looking));
    auto const looked = co_await outcomeOf(std::move(looking));
    auto const whole = looked.value.value_or(Survey());
    std::erase_if(plan.replace, [&](auto const &each) {
        auto const found = whole.parts.find(each.source.name);
        return found == whole.parts.end() || !isCopyOf(found->second, each.source);
    });
    co_await outcomeOf(publish(self, staging, plan));
    self->tally.count(plan, whole);
}

Task<void> TransferRun::copyNames(Self self, Names names, Operands target)
{
    self->throwIfCancelled();
    auto const source = self->job->source.endpoint(self->job->source.path);
    auto const there = target.endpoint(target.path);
    auto copying = self->transfer->copy(names, source, there, self->tally.beginStep());
    auto const copied = co_await outcomeOf(std::move(copying));
    co_await target.browser->wroteInto(target.path, names);
    self->tally.endStep(self->transfer->summary(), copied.failure ? CopyTally::End::broken : CopyTally::End::whole,
                        names);
    if (copied.failure)
        std::rethrow_exception(copied.failure);
    self->throwIfCancelled();
}

Task<Survey> TransferRun::survey(Self self, Operands where, Names names, Survey::Detail detail)
{
    if (names.empty())
        co_return Survey();
    self->throwIfCancelled();
    auto asking = where.browser->survey(where.path, std::move(names), detail);
    auto survey = co_await answerUntilStopped(std::move(asking));
    co_return survey;
}

Task<void> TransferRun::removeArrived(Self self, TransferPlan plan, MoveCheck::Surveys surveys)
{
    auto const &target = self->job->target;
    self->tally.tell("waiting until it is on the disk");
    co_await answerUntilStopped(target.browser->sync(target.path));
    self->tally.tell("comparing the source with the copy");
    // Behind the sync, which may take minutes: until then somebody may have changed the source.
    auto after = co_await survey(self, self->job->source, plan.allNames(), detailFor(plan));
    surveys.after = std::move(after);
    auto check = MoveCheck::of(plan.allNames(), surveys, mergedBy(plan));
    self->throwIfCancelled();
    auto const going = check.arrived;
    self->end->kept = std::move(check);
    if (going.empty())
        co_return;
    auto source = self->job->source;
    source.names = going;
    // A Trash on the same disk would free nothing of it, and one on another disk would be one more copy.
    auto const isForGood = self->job->isMoveBetweenFileSystems || !source.browser->writer()->deleteIsReversible();
    auto removing = isForGood ? source.browser->removePermanently(source.paths(), LockedFolders::go)
                              : source.browser->remove(source.paths());
    self->end->isSourceTouched = true;
    self->tally.tell("deleting the source");
    auto const removed = co_await outcomeOf(std::move(removing));
    if (!removed.failure) {
        append(self->end->gone, going);
        co_return;
    }
    co_await noteGone(self, going).withStop({});
    self->end->mayBePartlyGone = self->end->mayBePartlyGone && isForGood; // the Trash takes all of a folder or nothing
    if (failureIs<HostWork::MayGoOn>(removed.failure))
        self->end->isGoneKnown = false;
    self->throwIfCancelled();
    self->end->sourceFailure = removed.failure;
}

/// Which names of the source have gone. A place that does not answer does not hold a cancel for long.
Task<void> TransferRun::noteGone(Self self, Names going)
{
    auto const &source = self->job->source;
    auto asking = source.browser->factsAbout(source.path, going);
    auto const left =
        co_await outcomeOf(answerInTime(source.browser->clockRef(), patienceWithAnswer, std::move(asking)));
    self->end->isGoneKnown = left.value.has_value();
    if (!left.value)
        co_return;
    Names still;
    for (auto const &each : left.value->taken) {
        still.push_back(each.name);
        self->end->mayBePartlyGone = self->end->mayBePartlyGone || each.kind == EntryKind::directory;
    }
    append(self->end->gone, namesWithout(going, still));
}

} // namespace tw
