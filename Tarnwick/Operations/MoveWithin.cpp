#include "Tarnwick/Operations/MoveWithin.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/FailureKind.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "Tarnwick/Operations/AnswerUntil.h"

#include <algorithm>
#include <optional>
#include <span>
#include <unordered_map>
#include <unordered_set>

namespace tw {

namespace {

using Job = std::shared_ptr<TransferJob const>;
using End = std::shared_ptr<TransferEnd>;
using Move = FileSystemWriter::Move;
using Existing = FileSystemWriter::Existing;
using Names = std::vector<std::string>;

using Renamed = TransferPlan::Renamed;

using Occupant = FolderFacts::Occupant;
using Occupants = std::unordered_map<std::string, Occupant>; // by name

/// What has some of `names` in a folder. Throws what the question throws.
Task<Occupants> occupantsOf(Operands folder, Names names)
{
    auto const facts = co_await folder.browser->factsAbout(folder.path, std::move(names));
    Occupants occupants;
    for (auto const &each : facts.taken)
        occupants.emplace(each.name, each);
    co_return occupants;
}

/// Whether `now` is the file that the user was shown as the old one.
bool isOld(Occupant const &now, Occupant const &shown)
{
    if (now.identity && shown.identity)
        return now.identity == shown.identity;
    return now.kind == shown.kind && now.size == shown.size && now.mtime == shown.mtime;
}

/// What is known of names whose move has failed somewhere.
struct Moved {
    Names whole;  ///< the source has them no more, and the target has them
    Names inPart; ///< the source has them, and the target is not as it was
};

/// Nothing if the source is gone as a whole, as with a disk that was pulled out: that says nothing about its names.
/// `old` are the files that the moves replace.
Task<std::optional<Moved>> whatHasMoved(Job job, std::vector<Renamed> moves, Occupants old)
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
    std::unordered_set<std::string> left;
    for (auto const &each : source.taken)
        left.insert(each.name);
    auto const there = co_await occupantsOf(job->target, std::move(targets));
    Moved moved;
    for (auto const &each : moves) {
        auto const now = there.find(each.newName);
        auto const shown = old.find(each.newName);
        auto const isThere = now != there.end();
        auto const replaces = shown != old.end();
        auto const isNew = isThere && !(replaces && isOld(now->second, shown->second));
        if (isNew && !left.contains(each.name))
            moved.whole.push_back(each.name);
        else if (left.contains(each.name) && (isNew || (replaces && !isThere)))
            moved.inPart.push_back(each.name);
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

/// Moves, and how far they are.
struct Moving {
    std::vector<Move> moves;
    Existing existing = Existing::stays;
    bool isAsked = false; ///< a place has a request that it has not answered
};

/// In requests of a moment each if it can be cancelled: that is done between them, and each costs a round trip.
Task<void> moveInRequests(Job job, std::shared_ptr<Moving> moving, std::stop_token stop)
{
    auto const most = copies(*job) ? mostInRequest : moving->moves.size();
    for (std::span<Move const> left = moving->moves; !left.empty();) {
        if (stop.stop_requested())
            throw Cancelled();
        auto const some = left.first(std::min(most, left.size()));
        moving->isAsked = true;
        co_await job->source.browser->moveAll({some.begin(), some.end()}, moving->existing);
        moving->isAsked = false;
        left = left.subspan(some.size());
    }
}

/// A failure names one file at most, so both sides are asked afterwards what has moved. If they do not answer, any of
/// the names may have, and also if a cancel does not wait any longer for the end of a request.
Task<void> moveNames(Job job, End end, std::vector<Renamed> renamings, Occupants old)
{
    if (renamings.empty())
        co_return;
    auto const context = co_await currentContext();
    auto const clock = job->target.browser->clockRef();
    auto const moving = std::make_shared<Moving>();
    moving->existing = old.empty() ? Existing::stays : Existing::isReplaced;
    Names moved;
    for (auto const &each : renamings) {
        moved.push_back(each.name);
        moving->moves.push_back({job->source.pathOf(each.name), job->target.pathOf(each.newName)});
    }
    auto requests = moveInRequests(job, moving, context.stop);
    auto const outcome = co_await outcomeOf(answerSoonAfterStop(clock, patienceWithWork, std::move(requests)));
    if (outcome.failure) {
        auto const isGivenUp = moving->isAsked && failureIs<Cancelled>(outcome.failure);
        std::optional<Moved> known;
        if (!isGivenUp) {
            auto asking = whatHasMoved(job, std::move(renamings), std::move(old));
            auto const asked = co_await outcomeOf(answerSoonAfterStop(clock, patienceWithAnswer, std::move(asking)));
            known = asked.value.value_or(std::nullopt);
        }
        end->summary.areFilesKnown = end->summary.areFilesKnown && known.has_value();
        auto const parts = known ? partsLeft(*job, outcome.failure, known->inPart) : moved;
        end->summary.partial.insert(end->summary.partial.end(), parts.begin(), parts.end());
        moved = known ? known->whole : Names();
    }
    end->summary.complete.insert(end->summary.complete.end(), moved.begin(), moved.end());
    end->gone.insert(end->gone.end(), moved.begin(), moved.end());
    if (outcome.failure)
        std::rethrow_exception(outcome.failure);
}

/// Each name to the same name.
std::vector<Renamed> asTheyAre(Names const &names)
{
    std::vector<Renamed> same;
    for (auto const &name : names)
        same.push_back({.name = name, .newName = name});
    return same;
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
    co_await moveNames(job, end, std::move(unhindered), {});
    Names replacing;
    Occupants old;
    for (auto const &each : job->plan.replace) {
        if (!isFileOverFile(each))
            continue;
        replacing.push_back(each.source.name);
        old.emplace(each.source.name, each.target);
    }
    co_await moveNames(job, end, asTheyAre(replacing), std::move(old));
}

} // namespace tw
