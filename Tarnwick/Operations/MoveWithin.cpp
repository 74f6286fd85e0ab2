#include "Tarnwick/Operations/MoveWithin.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/FailureKind.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "Tarnwick/Operations/AnswerUntil.h"
#include "Tarnwick/Operations/NamesWithout.h"
#include "Tarnwick/Operations/StagingFolder.h"

#include <algorithm>
#include <optional>
#include <span>
#include <unordered_set>

namespace tw {

namespace {

using Job = std::shared_ptr<TransferJob const>;
using End = std::shared_ptr<TransferEnd>;
using Move = FileSystemWriter::Move;
using Names = std::vector<std::string>;

using Renamed = TransferPlan::Renamed;

std::unordered_set<std::string> namesIn(FolderFacts const &facts)
{
    std::unordered_set<std::string> names;
    for (auto const &each : facts.taken)
        names.insert(each.name);
    return names;
}

/// The names among `names` that a folder has. Throws what the question throws.
Task<std::unordered_set<std::string>> presentIn(Operands folder, Names names)
{
    auto const facts = co_await folder.browser->factsAbout(folder.path, std::move(names));
    co_return namesIn(facts);
}

/// What is known of names whose move has failed somewhere.
struct Moved {
    Names whole;  ///< the source has them no more, and the target has them
    Names inPart; ///< both sides have them
};

/// Nothing if the source is gone as a whole, as with a disk that was pulled out: that says nothing about its names.
Task<std::optional<Moved>> whatHasMoved(Job job, std::vector<Renamed> moves)
{
    Names sources;
    Names targets;
    for (auto const &each : moves) {
        sources.push_back(each.name);
        targets.push_back(each.newName);
    }
    auto const source = co_await job->source.browser->factsAbout(job->source.path, std::move(sources));
    if (source.state != FolderFacts::State::present)
        co_return std::nullopt;
    auto const left = namesIn(source);
    auto const arrived = co_await presentIn(job->target, std::move(targets));
    Moved moved;
    for (auto const &each : moves) {
        if (arrived.contains(each.newName))
            (left.contains(each.name) ? moved.inPart : moved.whole).push_back(each.name);
    }
    co_return moved;
}

/// What a host says of a name that something else has taken.
constexpr std::string_view isTaken = "File exists";

/// What a failed move may have left at the target. The mv of a host copies what goes to another of its file systems,
/// which not every host tells beforehand. On this machine it is a renaming, and has no parts; what is there is
/// something else that has taken the name.
Names partsLeft(TransferJob const &job, std::exception_ptr const &failure, Names inPart)
{
    if (!job.target.browser->host())
        return {};
    auto const failed = failureAs<FileOperationError::Failed>(failure);
    if (failed && failed->detail == isTaken)
        std::erase_if(inPart, [&](auto const &name) { return job.source.pathOf(name) == failed->path; });
    return inPart;
}

/// In requests of a moment each if it can be cancelled: that is done between them. Each costs a round trip.
Task<void> moveInRequests(Job job, std::shared_ptr<Browser> place, std::vector<Move> moves)
{
    auto const context = co_await currentContext();
    auto const most = copies(*job) ? mostInRequest : moves.size();
    for (std::span<Move const> left = moves; !left.empty();) {
        if (context.stop.stop_requested())
            throw Cancelled();
        auto const some = left.first(std::min(most, left.size()));
        co_await place->moveAll({some.begin(), some.end()});
        left = left.subspan(some.size());
    }
}

/// A failure names one file at most, so both sides are asked afterwards what has moved. If they do not answer, any of
/// the names may have.
Task<void> moveNames(Job job, End end, std::vector<Renamed> renamings)
{
    if (renamings.empty())
        co_return;
    Names moved;
    std::vector<Move> moves;
    for (auto const &each : renamings) {
        moved.push_back(each.name);
        moves.push_back({job->source.pathOf(each.name), job->target.pathOf(each.newName)});
    }
    auto const moving = co_await outcomeOf(moveInRequests(job, job->source.browser, std::move(moves)));
    if (moving.failure) {
        auto const asked = co_await outcomeOf(answerSoonAfterStop(job->target.browser->clockRef(), patienceWithAnswer,
                                                                  whatHasMoved(job, std::move(renamings))));
        auto const known = asked.value.value_or(std::nullopt);
        end->summary.areFilesKnown = end->summary.areFilesKnown && known.has_value();
        auto const parts = known ? partsLeft(*job, moving.failure, known->inPart) : moved;
        end->summary.partial.insert(end->summary.partial.end(), parts.begin(), parts.end());
        moved = known ? known->whole : Names();
    }
    end->summary.complete.insert(end->summary.complete.end(), moved.begin(), moved.end());
    end->gone.insert(end->gone.end(), moved.begin(), moved.end());
    if (moving.failure)
        std::rethrow_exception(moving.failure);
}

std::vector<Move> movesBetween(Operands const &from, Operands const &to, Names const &names)
{
    std::vector<Move> moves;
    for (auto const &name : names)
        moves.push_back({from.pathOf(name), to.pathOf(name)});
    return moves;
}

/// Moves files back whose places are still free.
Task<void> putBack(Operands staging, Operands target, Names names)
{
    auto const waiting = co_await presentIn(staging, names);
    auto const taken = co_await presentIn(target, names);
    Names homeless;
    for (auto const &name : names) {
        if (waiting.contains(name) && !taken.contains(name))
            homeless.push_back(name);
    }
    if (!homeless.empty())
        co_await target.browser->moveAll(movesBetween(staging, target, homeless));
}

/// Each name to the same name.
std::vector<Renamed> asTheyAre(Names const &names)
{
    std::vector<Renamed> same;
    for (auto const &name : names)
        same.push_back({.name = name, .newName = name});
    return same;
}

Task<void> moveOver(Job job, End end, Operands staging, Names names)
{
    co_await moveInRequests(job, job->target.browser, movesBetween(job->target, staging, names));
    co_await moveNames(job, end, asTheyAre(names));
}

/// Moves `unreplaced` back, and deletes the old files of the other names of `staging`. The result is what cannot be
/// moved back, for example because another program has made a file of its name: it stays in the staging folder.
Task<Names> clear(Operands staging, Operands target, Names unreplaced)
{
    staging.names = namesWithout(staging.names, unreplaced);
    if (!unreplaced.empty()) {
        co_await outcomeOf(putBack(staging, target, unreplaced));
        auto const left = co_await outcomeOf(presentIn(staging, unreplaced));
        if (left.value)
            std::erase_if(unreplaced, [&](auto const &name) { return !left.value->contains(name); });
    }
    // Not the folder as a whole: others may have put something into it.
    if (!staging.names.empty())
        co_await outcomeOf(staging.browser->removePermanently(staging.paths(), LockedFolders::go));
    co_return unreplaced;
}

/// Also after a stop: nobody would look for the old files in the staging folder. Of a place that does not answer then,
/// any of them may be there; what was asked of it is done when it answers again.
Task<void> clearInTime(Job job, End end, Operands staging, Names names)
{
    auto unreplaced = namesWithout(names, end->gone);
    staging.names = std::move(names);
    auto clearing = clear(staging, job->target, unreplaced).withStop({});
    auto const left =
        co_await outcomeOf(answerSoonAfterStop(staging.browser->clockRef(), patienceWithWork, std::move(clearing)));
    auto waiting = left.value.value_or(std::move(unreplaced));
    if (!waiting.empty())
        end->waiting = {.folder = staging.path, .names = std::move(waiting)};
}

/// A staging folder is still there. A host may have moved files into it after its connection was lost.
Task<void> noteLeft(End end, Operands staging, Names names)
{
    names = namesWithout(names, end->gone); // their new files are there
    auto const there = co_await outcomeOf(
        answerInTime(staging.browser->clockRef(), StagingFolder::patience, presentIn(staging, names)));
    if (there.value)
        std::erase_if(names, [&](auto const &name) { return !there.value->contains(name); });
    if (names.empty())
        end->leftBehind.push_back(staging.path);
    else
        end->waiting = {.folder = staging.path, .names = std::move(names)};
}

Task<void> replaceFiles(Job job, End end, Names names)
{
    auto const staging = co_await StagingFolder::begin(job->target);
    auto replaced = co_await outcomeOf(staging.made());
    if (!replaced.failure) {
        replaced = co_await outcomeOf(moveOver(job, end, staging.place(), names));
        co_await clearInTime(job, end, staging.place(), names);
    }
    if (end->waiting.names.empty()) {
        auto const isGone = co_await staging.discard(StagingFolder::Content::files);
        if (!isGone)
            co_await noteLeft(end, staging.place(), std::move(names)).withStop({});
    }
    replaced.take();
}

} // namespace

bool copies(TransferJob const &job)
{
    return !job.isRename() || !std::ranges::all_of(job.plan.replace, isFileOverFile);
}

bool isFileOverFile(NameConflict const &conflict)
{
    return conflict.source.kind != EntryKind::directory && conflict.target.kind != EntryKind::directory;
}

Task<void> moveWithin(Job job, End end)
{
    auto unhindered = asTheyAre(job->plan.free);
    unhindered.insert(unhindered.end(), job->plan.renamed.begin(), job->plan.renamed.end());
    co_await moveNames(job, end, std::move(unhindered));
    Names replacing;
    for (auto const &each : job->plan.replace) {
        if (isFileOverFile(each))
            replacing.push_back(each.source.name);
    }
    if (!replacing.empty())
        co_await replaceFiles(job, end, std::move(replacing));
}

} // namespace tw
