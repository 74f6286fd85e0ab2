#include "Tarnwick/Operations/MoveWithin.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/FailureKind.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "Tarnwick/Operations/AnswerUntil.h"

#include <algorithm>
#include <optional>
#include <span>
#include <unordered_set>

namespace tw {

namespace {

using Job = std::shared_ptr<TransferJob const>;
using End = std::shared_ptr<TransferEnd>;
using Move = FileSystemWriter::Move;
using Existing = FileSystemWriter::Existing;
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

/// Nothing if the source is gone as a whole, as with a disk that was pulled out: that says nothing about its names. A
/// file that was to be replaced is there in any case, whole.
Task<std::optional<Moved>> whatHasMoved(Job job, std::vector<Renamed> moves, Existing existing)
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
        if (!arrived.contains(each.newName))
            continue;
        if (!left.contains(each.name))
            moved.whole.push_back(each.name);
        else if (existing == Existing::stays)
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

/// In requests of a moment each if it can be cancelled: that is done between them. Each costs a round trip.
Task<void> moveInRequests(Job job, std::vector<Move> moves, Existing existing)
{
    auto const context = co_await currentContext();
    auto const most = copies(*job) ? mostInRequest : moves.size();
    for (std::span<Move const> left = moves; !left.empty();) {
        if (context.stop.stop_requested())
            throw Cancelled();
        auto const some = left.first(std::min(most, left.size()));
        co_await job->source.browser->moveAll({some.begin(), some.end()}, existing);
        left = left.subspan(some.size());
    }
}

/// A failure names one file at most, so both sides are asked afterwards what has moved. If they do not answer, any of
/// the names may have.
Task<void> moveNames(Job job, End end, std::vector<Renamed> renamings, Existing existing)
{
    if (renamings.empty())
        co_return;
    Names moved;
    std::vector<Move> moves;
    for (auto const &each : renamings) {
        moved.push_back(each.name);
        moves.push_back({job->source.pathOf(each.name), job->target.pathOf(each.newName)});
    }
    auto const moving = co_await outcomeOf(moveInRequests(job, std::move(moves), existing));
    if (moving.failure) {
        auto const asked = co_await outcomeOf(answerSoonAfterStop(job->target.browser->clockRef(), patienceWithAnswer,
                                                                  whatHasMoved(job, std::move(renamings), existing)));
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
    co_await moveNames(job, end, std::move(unhindered), Existing::stays);
    Names replacing;
    for (auto const &each : job->plan.replace) {
        if (isFileOverFile(each))
            replacing.push_back(each.source.name);
    }
    co_await moveNames(job, end, asTheyAre(replacing), Existing::isReplaced);
}

} // namespace tw
