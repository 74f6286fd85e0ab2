#include "Tarnwick/Operations/MoveWithin.h"

#include "TWCore/Async/Outcome.h"
#include "Tarnwick/Operations/StagingName.h"

#include <unordered_set>

namespace tw {

namespace {

using Job = std::shared_ptr<TransferJob const>;
using End = std::shared_ptr<TransferEnd>;
using Move = FileSystemWriter::Move;
using Names = std::vector<std::string>;

/// The names among `names` that a folder has. Throws what the question throws.
Task<std::unordered_set<std::string>> presentIn(Operands folder, Names names)
{
    auto const facts = co_await folder.browser->factsAbout(folder.path, std::move(names));
    std::unordered_set<std::string> present;
    for (auto const &each : facts.taken)
        present.insert(each.name);
    co_return present;
}

/// A failure names one file at most, so the source is asked afterwards which names are gone.
Task<void> moveNames(Job job, End end, std::vector<Move> moves, Names names)
{
    if (moves.empty())
        co_return;
    auto const moved = co_await outcomeOf(job->source.browser->moveAll(std::move(moves)));
    std::unordered_set<std::string> still;
    if (moved.failure) {
        auto const asked = co_await outcomeOf(presentIn(job->source, names));
        if (asked.value)
            still = *asked.value;
        else
            still.insert(names.begin(), names.end());
    }
    for (auto const &name : names) {
        if (still.contains(name))
            continue;
        end->summary.complete.push_back(name);
        end->gone.push_back(name);
    }
    if (moved.failure)
        std::rethrow_exception(moved.failure);
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

Task<void> moveOver(Job job, End end, Operands staging, Names names)
{
    co_await job->target.browser->moveAll(movesBetween(job->target, staging, names));
    co_await moveNames(job, end, movesBetween(job->source, job->target, names), names);
}

/// Moves back what was not replaced, and deletes what was. An old file that cannot be moved back stays in the staging
/// folder, for example because another program has made a file of its name.
Task<void> clearStaging(Job job, End end, Operands staging, Names names)
{
    std::unordered_set<std::string> const replaced(end->gone.begin(), end->gone.end());
    Names unreplaced;
    staging.names.clear();
    for (auto const &name : names)
        (replaced.contains(name) ? staging.names : unreplaced).push_back(name);
    if (!unreplaced.empty()) {
        co_await outcomeOf(putBack(staging, job->target, unreplaced));
        auto const left = co_await outcomeOf(presentIn(staging, unreplaced));
        if (left.value)
            std::erase_if(unreplaced, [&](auto const &name) { return !left.value->contains(name); });
    }
    if (unreplaced.empty()) {
        co_await outcomeOf(staging.browser->removePermanently({staging.path}));
        co_return;
    }
    end->waiting = {.folder = staging.path, .names = std::move(unreplaced)};
    if (!staging.names.empty())
        co_await outcomeOf(staging.browser->removePermanently(staging.paths()));
}

Task<void> replaceFiles(Job job, End end, Names names)
{
    auto staging = job->target;
    staging.path = job->target.pathOf(stagingName());
    co_await staging.browser->makeDirectory(staging.path);
    auto const replaced = co_await outcomeOf(moveOver(job, end, staging, names));
    // Also after a stop: nobody would look for the old files in the staging folder.
    co_await clearStaging(job, end, staging, names).withStop({});
    if (replaced.failure)
        std::rethrow_exception(replaced.failure);
}

} // namespace

bool isFileOverFile(NameConflict const &conflict)
{
    return conflict.source.kind != EntryKind::directory && conflict.target.kind != EntryKind::directory;
}

Task<void> moveWithin(Job job, End end)
{
    auto moves = movesBetween(job->source, job->target, job->plan.free);
    auto names = job->plan.free;
    for (auto const &each : job->plan.renamed) {
        moves.push_back({job->source.pathOf(each.name), job->target.pathOf(each.newName)});
        names.push_back(each.name);
    }
    co_await moveNames(job, end, std::move(moves), std::move(names));
    Names replacing;
    for (auto const &each : job->plan.replace) {
        if (isFileOverFile(each))
            replacing.push_back(each.source.name);
    }
    if (!replacing.empty())
        co_await replaceFiles(job, end, std::move(replacing));
}

} // namespace tw
