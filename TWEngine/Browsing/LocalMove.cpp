#include "TWEngine/Browsing/LocalMove.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/Trimmed.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Browsing/LocalRemoval.h"
#include "TWEngine/Browsing/LocalSurvey.h"
#include "TWEngine/Browsing/LocalWrites.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/OneShotCommand.h"

#include <cerrno>
#include <cstdlib>

namespace tw {

namespace {

using Move = FileSystemWriter::Move;

/// Of what cp says, as much is kept for a message.
constexpr std::size_t keptBytes = 4096;

[[noreturn]] void fail(Move const &move, std::string const &why)
{
    throw FileOperationError::Failed("rename", move.from, why);
}

std::string folderOf(std::string const &path)
{
    auto const slash = path.rfind('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

std::string nameOf(std::string const &path)
{
    return path.substr(path.rfind('/') + 1);
}

/// Runs `work(stop)` where it may block on the file system of `path`.
template <class Function>
Task<std::invoke_result_t<Function, std::stop_token const &>> inLane(EngineRuntime *engine, std::string path,
                                                                     Function work)
{
    auto const context = co_await currentContext();
    co_return co_await engine->files().run(
        path, FileLanes::LastLink::keep, WorkPriority::interactive,
        [work = std::move(work), stop = context.stop](std::string const & /*place*/) { return work(stop); });
}

Task<Survey> surveyOf(EngineRuntime *engine, std::string folder, std::string name)
{
    return inLane(engine, folder,
                  [folder, name](std::stop_token const &stop) { return localSurvey(folder, {name}, stop); });
}

/// A new folder beside the target, which only this user can read.
Task<std::string> makeStaging(EngineRuntime *engine, Move move)
{
    return inLane(engine, folderOf(move.to), [move](std::stop_token const & /*stop*/) {
        auto path = folderOf(move.to) + "/.tw-paste-XXXXXX";
        if (!::mkdtemp(path.data()))
            fail(move, systemText(errno));
        return path;
    });
}

Task<void> copy(EngineRuntime *engine, Move move, std::string staging)
{
    auto const result = co_await OneShotCommand::run(engine->io(),
                                                     {.program = "cp",
                                                      .arguments = {"-a", "--", move.from, staging + '/'},
                                                      .error = PipeEnd{},
                                                      .session = ChildCommand::Session::own},
                                                     keptBytes);
    if (!result.status.isSuccess())
        fail(move, std::string(trimmed(repaired(result.errors))));
}

Task<void> publish(EngineRuntime *engine, Move move, std::string staging)
{
    return inLane(engine, staging, [move, staging](std::stop_token const & /*stop*/) {
        auto renamed = LocalWrites::Renamed::done;
        try {
            renamed =
                LocalWrites::rename(staging + '/' + nameOf(move.from), move.to, FileSystemWriter::Existing::stays);
        } catch (FileOperationError::Failed const &failure) {
            fail(move, failure.detail);
        }
        if (renamed != LocalWrites::Renamed::done) // a union of file systems can say so within one folder
            fail(move, systemText(EXDEV));
        LocalWrites::sync(folderOf(move.to));
    });
}

Task<void> removePath(EngineRuntime *engine, std::string path)
{
    return inLane(engine, path, [path](std::stop_token const &stop) { removeForGood(path, stop, LockedFolders::go); });
}

Task<void> copyAndPublish(EngineRuntime *engine, Move move, std::string staging)
{
    auto const from = folderOf(move.from);
    auto const name = nameOf(move.from);
    auto const before = co_await surveyOf(engine, from, name);
    co_await copy(engine, move, staging);
    auto const copied = co_await surveyOf(engine, staging, name);
    auto const after = co_await surveyOf(engine, from, name);
    if (after != before)
        fail(move, "it has changed while it was copied, so it stays where it is");
    if (copied.parts.size() != 1 || copied.parts.at(name).shape != after.parts.at(name).shape)
        fail(move, "the copy is not whole, so the original stays where it is");
    co_await publish(engine, move, staging);
    // A slow disk takes its time until all is on it.
    auto const last = co_await surveyOf(engine, from, name);
    if (last != before)
        fail(move, "it has changed behind the copy, so it stays where it is, beside the copy");
}

Task<void> moveHere(EngineRuntime *engine, Move move)
{
    auto const staging = co_await makeStaging(engine, move);
    auto outcome = co_await outcomeOf(copyAndPublish(engine, move, staging));
    // Also after a cancellation, which must not stop this.
    auto const cleared = co_await outcomeOf(removePath(engine, staging).withStop({}));
    outcome.take();
    co_await removePath(engine, move.from).withStop({});
    if (cleared.failure)
        std::rethrow_exception(cleared.failure);
}

} // namespace

Task<void> moveToOtherFileSystem(EngineRuntime &engine, Move move)
{
    return moveHere(&engine, std::move(move));
}

} // namespace tw
