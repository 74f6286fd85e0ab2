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

#include <span>
#include <unordered_set>

namespace tw {

namespace {

void append(std::vector<std::string> &to, std::vector<std::string> const &names)
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
      onProgress(std::move(reporter))
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
    auto end = *self->end;
    end.failure = outcome.failure;
    if (end.failure && self->stop.stop_requested())
        end.failure = std::make_exception_ptr(FileOperationError::Cancelled());
    auto begun = end.summary.complete;
    append(begun, end.summary.partial);
    end.summary.untouched = namesWithout(self->job->plan.allNames(), begun);
    if (!self->behind)
        end.summary.totalFiles.reset();
    else if (end.summary.totalFiles)
        *end.summary.totalFiles += self->behind->files;
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
    for (auto left = std::span(steps); !left.empty(); left = left.subspan(1)) {
        auto const &step = left.front();
        self->behind = CopyStep::sizeOf(left.subspan(1));
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
    auto const filesBefore = self->end->summary.files;
    auto const wereFilesKnown = self->end->summary.areFilesKnown;
    auto copied = co_await outcomeOf(copyAndSurvey(self, staging, names));
    auto const whole = plan.only(self->end->summary.complete);
    self->forgetArrivals(names); // the staging folder goes, with all that is still in it
    if (copied.failure) {
        self->end->summary.files = filesBefore;
        self->end->summary.areFilesKnown = wereFilesKnown;
        auto publishing = publishWhole(self, staging, whole);
        co_await outcomeOf(withLaterStop(staging.browser->clockRef(), patienceWithWork, std::move(publishing)));
    }
    auto arrived = copied.take();
    co_await publish(self, staging, std::move(plan));
    co_return arrived;
}

/// Gives names of the staging folder their names in the target. If nobody knows which of them have got them, the folder
/// is left behind.
Task<void> TransferRun::publish(Self self, Operands staging, TransferPlan plan)
{
    auto const job = std::make_shared<TransferJob>(*self->job);
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

/// Publishes what was whole when the copy ended before its end, and counts its files if that does not take long.
/// Nothing replaces a file without having been looked at.
Task<void> TransferRun::publishWhole(Self self, Operands staging, TransferPlan plan)
{
    auto const names = plan.allNames();
    if (names.empty())
        co_return;
    auto counting = staging.browser->survey(staging.path, names, Survey::Detail::sums);
    auto const whole =
        co_await outcomeOf(answerInTime(staging.browser->clockRef(), patienceWithAnswer, std::move(counting)));
    std::erase_if(plan.replace, [&](auto const &each) {
        if (!whole.value)
            return true;
        auto const found = whole.value->parts.find(each.source.name);
        return found == whole.value->parts.end() || !isCopyOf(found->second, each.source);
    });
    co_await outcomeOf(publish(self, staging, std::move(plan)));
    if (!whole.value) {
        self->end->summary.areFilesKnown = false;
        co_return;
    }
    for (auto const &name : self->end->summary.complete) {
        if (auto const found = whole.value->parts.find(name); found != whole.value->parts.end())
            self->end->summary.files += found->second.files;
    }
}

Task<void> TransferRun::copyNames(Self self, Names names, Operands target)
{
    self->throwIfCancelled();
    auto const source = self->job->source.endpoint(self->job->source.path);
    auto const there = target.endpoint(target.path);
    auto copying = self->transfer->copy(names, source, there, self->reporterOfNextCopy());
    auto const copied = co_await outcomeOf(std::move(copying));
    co_await target.browser->wroteInto(target.path, names);
    auto summary = self->transfer->summary();
    if (!copied.failure) {
        summary.complete = names;
        summary.partial.clear();
    }
    self->add(summary);
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
    self->tell("waiting until it is on the disk");
    co_await answerUntilStopped(target.browser->sync(target.path));
    self->tell("comparing the source with the copy");
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
    self->tell("deleting the source");
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

/// The numbers of a copy go on where those of the copies before it ended.
Transfer::Reporter TransferRun::reporterOfNextCopy() const
{
    return [report = onProgress, sum = bytes, before = bytes->load(), files = end->summary.files,
            behind = behind](TransferProgress progress) {
        progress.bytes += before;
        *sum = progress.bytes;
        if (!behind)
            progress.total.reset();
        else if (progress.total)
            *progress.total += before + behind->bytes;
        if (!behind)
            progress.totalFiles.reset();
        else if (progress.totalFiles)
            *progress.totalFiles += files + behind->files;
        progress.files += files;
        report(progress);
    };
}

/// Says what is done behind the copies.
void TransferRun::tell(std::string doing) const
{
    auto const copied = bytes->load();
    onProgress({.bytes = copied,
                .total = copied > 0 ? std::optional(copied) : std::nullopt,
                .item = std::move(doing),
                .files = end->summary.files,
                .totalFiles = end->summary.files});
}

void TransferRun::add(TransferSummary const &part)
{
    auto &sum = end->summary;
    sum.files += part.files;
    sum.areFilesKnown = sum.areFilesKnown && part.areFilesKnown;
    if (part.totalFiles)
        sum.totalFiles = sum.totalFiles.value_or(sum.files - part.files) + *part.totalFiles;
    append(sum.complete, part.complete);
    append(sum.partial, part.partial);
    if (!part.words.empty())
        sum.words = part.words;
}

void TransferRun::forgetArrivals(Names const &names)
{
    auto &sum = end->summary;
    sum.complete = namesWithout(sum.complete, names);
    sum.partial = namesWithout(sum.partial, names);
}

} // namespace tw
