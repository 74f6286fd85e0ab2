#include "Tarnwick/Operations/ArchiveChanges.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "Tarnwick/Connections/Connections.h"
#include "Tarnwick/Connections/OpenArchive.h"
#include "Tarnwick/Operations/ArchiveSteps.h"
#include "Tarnwick/Operations/ArchiveWords.h"
#include "Tarnwick/Operations/ClaimSteps.h"
#include "Tarnwick/Operations/CountPhrase.h"
#include "Tarnwick/Operations/Delivery.h"
#include "Tarnwick/Operations/TransferSteps.h"

#include <unordered_set>

namespace tw {

namespace {

using Names = std::vector<std::string>;

/// All panes in the archive list it anew. In the pane of the key press the cursor goes to `select`.
void rereadArchive(OperationContext const &context, std::string const &select)
{
    auto const asked = context.pane.lock();
    for (auto const &weak : context.panes) {
        auto const each = weak.lock();
        auto const &shown = each ? each->archiveOnShow() : nullptr;
        if (shown && shown->connection() == context.operands.connection)
            each->reloadArchive(each == asked ? select : std::string());
    }
}

std::string lastComponent(std::string const &path)
{
    return path.substr(path.rfind('/') + 1);
}

/// Performs the work, unless another operation changes the archive file.
Task<bool> change(OperationContext context, ArchiveSteps::Work work)
{
    auto const file = context.operands.archive->file();
    Operands const written{
        .browser = file.holder, .connection = file.connection, .path = file.folder(), .names = {file.name()}};
    auto claim = co_await ClaimSteps::claim(context.claims, "change", written, ClaimedNames::Use::written);
    work.claim = std::move(claim);
    auto const isDone = co_await ArchiveSteps::perform(context, std::move(work));
    co_return isDone;
}

Task<void> remove(OperationContext context)
{
    auto const what = context.operands;
    auto const name = what.archive->file().name();
    auto const answer = co_await context.dialogs->confirm(ArchiveWords::deleteFrom(name, what.names));
    if (answer == Dialogs::Answer::cancel)
        co_return;
    auto const survivor = context.nameSurviving();
    ArchiveSteps::Work work{.title = "Changing archive",
                            .conclusion = "Deleted " + countPhrase(what.names.size()) + " from " + name + ".",
                            .claim = {},
                            .begin = [members = ArchiveWords::membersOf(what), path = what.archive->file().path](
                                         Archives &archives, Archives::Reporter onProgress) {
                                return archives.remove(members, path, std::move(onProgress));
                            }};
    auto const isDone = co_await change(context, std::move(work));
    if (isDone) {
        context.unmarkOperands();
        rereadArchive(context, survivor);
    }
}

/// The names among those of the paths that the folder in the archive has.
Task<Names> takenBy(OperationContext context, Names paths)
{
    auto const opened = co_await context.operands.browser->open(context.operands.path);
    std::unordered_set<std::string_view> there;
    for (auto const &entry : opened.snapshot.entries())
        there.insert(opened.snapshot.nameBytes(entry));
    Names taken;
    for (auto const &path : paths) {
        auto name = lastComponent(path);
        if (there.contains(name))
            taken.push_back(std::move(name));
    }
    co_return taken;
}

Task<void> add(OperationContext context, Names paths)
{
    auto const where = context.operands;
    auto const name = where.archive->file().name();
    auto const first = paths.empty() ? std::string() : lastComponent(paths.front());
    ArchiveSteps::Work work{.title = "Adding to archive",
                            .conclusion = "Added " + countPhrase(paths.size()) + " to " + name + ".",
                            .claim = {},
                            .begin = [paths, path = where.archive->file().path,
                                      inner = where.path.substr(1)](Archives &archives, Archives::Reporter onProgress) {
                                return archives.add(paths, path, inner, std::move(onProgress));
                            }};
    auto const isDone = co_await change(context, std::move(work));
    if (isDone)
        rereadArchive(context, first);
}

Task<bool> mayReplace(OperationContext context, Names paths)
{
    auto const taken = co_await takenBy(context, std::move(paths));
    if (taken.empty())
        co_return true;
    auto const name = context.operands.archive->file().name();
    auto const answer = co_await context.dialogs->confirm(ArchiveWords::replaceIn(name, taken));
    co_return answer == Dialogs::Answer::ok;
}

/// The paths of local copies in a scratch folder; none if they could not be fetched, which the user has been told.
Task<Names> fetch(OperationContext context, FileDrag files, std::string folder)
{
    TransferJob job;
    auto source = co_await sourceOf(context, files);
    if (source.archive)
        throw FileOperationError::Unsupported("files cannot be copied from one archive into another");
    job.source = std::move(source);
    job.target = {.browser = context.connections->local(), .connection = localConnection, .path = folder, .names = {}};
    job.plan = TransferPlan::of(files.names, {}, {});
    auto const end = co_await TransferSteps::carryOut(context, job, {});
    Names paths;
    if (!end.failure) {
        for (auto const &name : files.names)
            paths.push_back(folder + "/" + name);
    }
    co_return paths;
}

Task<void> addFromHost(OperationContext context, FileDrag files)
{
    if (!context.makeScratchFolder)
        throw FileOperationError::Unsupported("adding files of a host to an archive");
    auto const mayGoOn = co_await mayReplace(context, files.names);
    if (!mayGoOn)
        co_return;
    auto const folder = co_await context.makeScratchFolder();
    auto outcome = co_await outcomeOf(fetch(context, std::move(files), folder));
    if (outcome.value && !outcome.value->empty()) {
        auto const added = co_await outcomeOf(add(context, *outcome.value));
        outcome.failure = added.failure;
    }
    Names const staged{folder};
    co_await outcomeOf(context.connections->local()->removePermanently(staged, LockedFolders::go)).withStop({});
    if (outcome.failure)
        std::rethrow_exception(outcome.failure);
}

Task<void> addFromHere(OperationContext context, Names paths)
{
    auto const mayGoOn = co_await mayReplace(context, paths);
    if (mayGoOn)
        co_await add(context, std::move(paths));
}

Task<void> changing(OperationContext context, char const *refusal, Task<void> work)
{
    auto const objection = ArchiveWords::objectionToChange(context.operands, refusal);
    if (!objection.isEmpty()) {
        context.warn(objection);
        co_return;
    }
    auto const outcome = co_await outcomeOf(std::move(work));
    if (outcome.failure)
        co_await context.showFailure(outcome.failure);
}

constexpr auto cannotBeAddedTo = "only archives on this Mac can be added to";

} // namespace

Task<void> deleteFromArchive(OperationContext context)
{
    return changing(context, "only archives on this Mac can be changed", remove(context));
}

Task<void> addToArchive(OperationContext context, FileDrag files)
{
    auto paths = files.paths();
    return changing(context, cannotBeAddedTo,
                    files.connection == localConnection ? addFromHere(context, std::move(paths))
                                                        : addFromHost(context, std::move(files)));
}

Task<void> addPathsToArchive(OperationContext context, std::vector<std::string> paths)
{
    return changing(context, cannotBeAddedTo, addFromHere(context, std::move(paths)));
}

} // namespace tw
