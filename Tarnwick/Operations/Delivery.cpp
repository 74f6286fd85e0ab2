#include "Tarnwick/Operations/Delivery.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Connections/Connections.h"
#include "Tarnwick/Operations/ArchiveChanges.h"
#include "Tarnwick/Operations/ClaimSteps.h"
#include "Tarnwick/Operations/ExtractOut.h"
#include "Tarnwick/Operations/TransferSteps.h"

#include <unordered_map>

namespace tw {

namespace {

Task<Operands> findSource(OperationContext context, FileDrag files)
{
    Operands source{.browser = nullptr,
                    .connection = files.connection,
                    .path = std::move(files.directory),
                    .names = std::move(files.names)};
    for (auto const &weak : context.panes) {
        auto const pane = weak.lock();
        if (pane && pane->connectionName() == source.connection) {
            source.browser = pane->browserOnShow();
            source.archive = pane->archiveOnShow();
            co_return source;
        }
    }
    if (source.connection.contains('/')) // no host has such a name
        throw FileOperationError::Unsupported("copying out of an archive that no pane is in any more");
    if (source.connection == localConnection) {
        source.browser = context.connections->local();
    } else {
        auto browser = co_await context.connections->ssh(source.connection);
        source.browser = std::move(browser);
    }
    co_return source;
}

/// Every name that is taken is written under another one.
std::vector<NameConflict::Answer> keepAll(std::vector<NameConflict> const &taken)
{
    return std::vector(taken.size(), NameConflict::Answer::keepBoth);
}

std::string firstNameOf(TransferPlan const &plan)
{
    if (!plan.renamed.empty())
        return plan.renamed.front().newName;
    return plan.free.empty() ? std::string() : plan.free.front();
}

Task<void> run(OperationContext context, TransferJob job, std::function<void()> onMoved)
{
    auto work = context.beginWork(job.source.browser);
    auto const writing = ClaimSteps::of(context, job, TransferRefusal::Naming::renamed);
    auto checked = co_await ClaimSteps::check(context, writing);
    job.isMoveBetweenFileSystems = TransferSteps::isMoveBetweenFileSystems(job, checked.facts);
    job.targetTakesCasesForOne = checked.facts.target.takesCasesForOne;
    auto const taken = TakenNames::conflicts(job.source.names, checked.facts);
    auto plan = TransferPlan::of(job.source.names, taken, keepAll(taken));
    auto named = co_await ClaimSteps::withFreeNames(context, std::move(plan), writing, std::move(checked));
    job.plan = std::move(named.plan);
    work.reset();
    auto const end = co_await TransferSteps::perform(context, job, {.atTarget = firstNameOf(job.plan)});
    named.claim.reset();
    co_await TransferSteps::tell(context, job, end);
    if (job.kind == TransferKind::move && !end.failure && onMoved)
        onMoved();
}

Task<void> deliverFrom(OperationContext context, Delivery what)
{
    if (context.operands.archive) {
        co_await addToArchive(std::move(context), std::move(what.drag));
        co_return;
    }
    TransferJob job{.kind = what.drag.isMove ? TransferKind::move : TransferKind::copy};
    job.target = context.operands;
    job.target.names.clear();
    if (!job.target.browser->writer()) {
        context.warn({"%@ is read-only", {job.target.connection}});
        co_return;
    }
    auto source = co_await sourceOf(context, what.drag);
    if (source.archive) {
        if (what.drag.isMove)
            context.warn("files cannot be moved out of an archive");
        else
            co_await extractOut(context, std::move(source), std::move(job.target));
        co_return;
    }
    job.source = std::move(source);
    co_await run(std::move(context), std::move(job), std::move(what.onMoved));
}

std::string folderOf(std::string const &path)
{
    auto const slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

/// One drag for each folder, in the order in which they come first.
std::vector<FileDrag> byFolder(std::vector<std::string> const &paths, TransferKind kind)
{
    std::vector<FileDrag> drags;
    std::unordered_map<std::string, std::size_t> known;
    for (auto const &path : paths) {
        auto const slash = path.rfind('/');
        if (slash == std::string::npos || slash + 1 == path.size())
            continue; // not a file in a folder
        auto const [found, isNew] = known.emplace(folderOf(path), drags.size());
        if (isNew)
            drags.push_back({.connection = std::string(localConnection),
                             .directory = found->first,
                             .names = {},
                             .isMove = kind == TransferKind::move});
        drags[found->second].names.push_back(path.substr(slash + 1));
    }
    return drags;
}

} // namespace

Task<Operands> sourceOf(OperationContext context, FileDrag files)
{
    return findSource(std::move(context), std::move(files));
}

Task<void> deliver(OperationContext context, Delivery what)
{
    if (what.drag.names.empty())
        co_return;
    auto const isSame =
        what.drag.connection == context.operands.connection && what.drag.directory == context.operands.path;
    if (isSame && (what.sameFolder == SameFolder::refuse || what.drag.isMove)) {
        if (auto const pane = context.pane.lock())
            pane->showStatus("already here");
        co_return;
    }
    auto const outcome = co_await outcomeOf(deliverFrom(context, std::move(what)));
    if (outcome.failure)
        co_await context.showFailure(outcome.failure);
}

Task<void> deliverPaths(OperationContext context, std::vector<std::string> paths, TransferKind kind,
                        SameFolder sameFolder, std::function<void()> onMoved)
{
    if (context.operands.archive) {
        co_await addPathsToArchive(std::move(context), std::move(paths));
        co_return;
    }
    auto drags = byFolder(paths, kind);
    auto const moved = std::make_shared<std::size_t>(0);
    for (auto const &drag : drags)
        co_await deliver(context, {.drag = drag, .sameFolder = sameFolder, .onMoved = [moved] { ++*moved; }});
    if (onMoved && !drags.empty() && *moved == drags.size())
        onMoved();
}

} // namespace tw
