#include "TWEngine/SSH/HostFiles.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Shell/EndableCommand.h"
#include "TWCore/Shell/FileCommands.h"
#include "TWCore/Shell/FolderQuestion.h"
#include "TWCore/Shell/MoveCommand.h"
#include "TWEngine/Browsing/ForgottenPaths.h"
#include "TWEngine/Platform/RandomDigits.h"
#include "TWEngine/Shell/RemoteShellError.h"
#include "TWEngine/Transfer/HostWork.h"

#include <map>
#include <set>

namespace tw::HostFiles {

namespace {

/// A command that changes the host, and what its failure is called.
struct Change {
    std::string operation;
    std::string path;
    std::string command;
};

[[noreturn]] void fail(Change const &change, CommandResult const &result)
{
    auto const words = trimmed(result.output);
    throw FileOperationError::Failed(change.operation, change.path,
                                     words.empty() ? "exit " + std::to_string(result.status) : std::string(words));
}

Task<CommandResult> send(Host host, Change change, CommandSession session = CommandSession::work)
{
    return host->runCommand({.text = std::move(change.command), .session = session, .effect = CommandEffect::changes});
}

/// What follows from a command with an effect: its result, or nothing if the connection was lost meanwhile.
Task<std::optional<CommandResult>> resultIfKnown(Task<CommandResult> sending)
{
    auto outcome = co_await outcomeOf(std::move(sending));
    try {
        co_return outcome.take();
    } catch (RemoteShellError::OutcomeUnknown const &) {
    }
    co_return std::nullopt;
}

std::string nameOf(std::string const &path)
{
    return path.substr(path.rfind('/') + 1);
}

/// The result of a question that is asked after a change over which the connection was lost. Throws OutcomeUnknown if
/// the host cannot be asked.
template <class T>
Task<T> askedAfterLoss(Host host, Task<T> asking)
{
    auto outcome = co_await outcomeOf(std::move(asking));
    if (outcome.failure)
        throw RemoteShellError::OutcomeUnknown(host->host());
    co_return *std::move(outcome.value);
}

/// Those of `paths` that exist, as the host sees it after a loss.
Task<std::set<std::string>> existing(Host host, Paths paths)
{
    std::map<std::string, Paths> namesByFolder;
    for (auto const &path : paths)
        namesByFolder[parentOf(path)].push_back(nameOf(path));
    std::set<std::string> found;
    for (auto const &[folder, names] : namesByFolder) {
        auto const facts = co_await askedAfterLoss(host, factsAbout(host, folder, names));
        for (auto const &taken : facts.taken)
            found.insert((folder == "/" ? folder : folder + '/') + taken.name);
    }
    co_return found;
}

/// Takes `count` items off the front of `items`.
template <class Item>
std::vector<Item> takeFront(std::vector<Item> &items, std::size_t count)
{
    auto const end = items.begin() + static_cast<std::ptrdiff_t>(count);
    std::vector<Item> taken(std::make_move_iterator(items.begin()), std::make_move_iterator(end));
    items.erase(items.begin(), end);
    return taken;
}

/// The paths for the next command, taken off the front of `paths`.
Paths takeFitting(ShellDialect dialect, Paths &paths)
{
    return takeFront(paths, FileCommands::fittingFront(dialect, paths).size());
}

/// Where both cases are one name, both are there before and after. What the folder lists tells them apart.
Task<bool> isRespelled(Host host, FileSystemWriter::Move move)
{
    auto asking = host->runCommand({.text = MoveCommand::isRespelled(move)});
    auto const answer = co_await askedAfterLoss(host, std::move(asking));
    co_return answer.status == 0;
}

/// Throws for the first of the moves that the host has not made, after the connection was lost meanwhile.
Task<void> requireMoved(Host host, std::vector<FileSystemWriter::Move> moves)
{
    auto const dialect = co_await host->dialect();
    Paths paths;
    for (auto const &move : moves) {
        paths.push_back(move.from);
        paths.push_back(move.to);
    }
    auto const there = co_await existing(host, std::move(paths));
    for (auto const &move : moves) {
        auto hasMoved = !there.contains(move.from) && there.contains(move.to);
        auto const mayBeRespelled = dialect == ShellDialect::posix && MoveCommand::changesOnlyCase(move);
        if (!hasMoved && there.contains(move.to) && mayBeRespelled)
            hasMoved = co_await isRespelled(host, move);
        if (!hasMoved)
            throw FileOperationError::Failed("rename", move.from, "the connection was lost before it was moved");
    }
}

Task<void> removeOn(EngineRuntime *engine, Host host, Paths paths, LockedFolders locked)
{
    if (paths.empty())
        co_return;
    auto const dialect = co_await host->dialect();
    while (!paths.empty()) {
        auto const some = takeFront(paths, FileCommands::fittingRequest(dialect, paths).size());
        Change change{"delete", some.front(), FileCommands::remove(dialect, some, locked)};
        auto const token = randomDigits(16);
        auto sending = dialect == ShellDialect::posix
                           ? HostWork::run(*engine, host, token, EndableCommand::text(token, {"rm"}, change.command),
                                           CommandEffect::changes, {}, CommandSession::work)
                           : send(host, change);
        auto const result = co_await resultIfKnown(std::move(sending));
        if (result && result->status != 0)
            fail(change, *result);
        if (result)
            continue;
        auto const left = co_await existing(host, some);
        if (left.empty())
            continue;
        change.path = *std::ranges::find_if(some, [&](auto const &path) { return left.contains(path); });
        fail(change, {.output = "the connection was lost, and " + std::to_string(left.size()) + " of " +
                                std::to_string(some.size()) + " were still there afterwards",
                      .status = 0});
    }
}

} // namespace

Task<void> makeDirectory(Host host, std::string path)
{
    auto const dialect = co_await host->dialect();
    Change const change{"create folder", path, FileCommands::makeDirectory(dialect, path)};
    auto const result = co_await resultIfKnown(send(host, change));
    if (result && result->status != 0)
        fail(change, *result);
    if (result)
        co_return;
    auto const facts = co_await askedAfterLoss(host, factsAbout(host, parentOf(path), {nameOf(path)}));
    if (facts.taken.empty() || facts.taken.front().kind != EntryKind::directory)
        fail(change, {.output = "the connection was lost before the folder was made", .status = 0});
}

Task<void> removeEmptyFolder(Host host, std::string path)
{
    auto const dialect = co_await host->dialect();
    Change const change{"delete", path, FileCommands::removeEmptyFolder(dialect, path)};
    auto const result = co_await resultIfKnown(send(host, change));
    if (result && result->status != 0)
        fail(change, *result);
    if (result)
        co_return;
    auto const left = co_await existing(host, {path});
    if (!left.empty())
        fail(change, {.output = "the connection was lost before the folder was deleted", .status = 0});
}

Task<void> remove(EngineRuntime &engine, Host host, Paths paths, LockedFolders locked)
{
    return removeOn(&engine, std::move(host), std::move(paths), locked);
}

Task<void> moveAll(Host host, std::vector<FileSystemWriter::Move> moves, FileSystemWriter::Existing existing)
{
    auto const dialect = co_await host->dialect();
    while (!moves.empty()) {
        auto const some = takeFront(moves, MoveCommand::fittingFront(dialect, moves).size());
        Change change{"rename", some.front().from, MoveCommand::text(dialect, some, existing)};
        auto const result = co_await resultIfKnown(send(host, change));
        if (result && result->status == 0)
            continue;
        if (!result) {
            co_await requireMoved(host, some);
            continue;
        }
        auto const failure = MoveCommand::failure(result->output, some.size());
        change.path = some[failure.index].from;
        if (result->status == MoveCommand::otherFileSystem && dialect == ShellDialect::posix)
            throw FileOperationError::OtherFileSystem(change.path);
        fail(change, {.output = failure.words, .status = result->status});
    }
}

Task<FolderFacts> factsAbout(Host host, std::string folder, std::vector<std::string> names)
{
    auto const dialect = co_await host->dialect();
    std::optional<FolderFacts> all;
    do {
        auto const some = takeFront(names, FolderQuestion::fittingFront(dialect, names).size());
        auto const result = co_await host->runCommand({.text = FolderQuestion::text(dialect, folder, some)});
        auto facts = FolderQuestion::facts(dialect, result.output, some);
        if (result.status != 0 || !facts)
            fail({.operation = "reading", .path = folder, .command = {}}, result);
        if (all)
            facts->taken.insert(facts->taken.begin(), all->taken.begin(), all->taken.end());
        all = std::move(facts);
    } while (!names.empty());
    co_return *std::move(all);
}

Task<void> copy(Host host, Paths from, std::string to)
{
    if (from.empty())
        co_return;
    auto const dialect = co_await host->dialect();
    while (!from.empty()) {
        auto const some = takeFitting(dialect, from);
        Change const change{"copy", some.front(), FileCommands::copy(dialect, some, to)};
        auto const result = co_await send(host, change, CommandSession::longWork);
        if (result.status != 0)
            fail(change, result);
    }
}

Task<void> sync(Host host, std::string folder)
{
    auto const dialect = co_await host->dialect();
    auto command = FileCommands::sync(dialect, folder);
    if (command.empty())
        co_return;
    auto const result = co_await host->runCommand(
        {.text = std::move(command), .session = CommandSession::longWork, .limit = FileCommands::syncLimit});
    if (result.status != 0)
        fail({.operation = "writing", .path = folder, .command = {}}, result);
}

Task<std::int64_t> totalSize(Host host, Paths paths)
{
    if (paths.empty())
        co_return 0;
    auto const dialect = co_await host->dialect();
    std::int64_t total = 0;
    while (!paths.empty()) {
        auto const some = takeFitting(dialect, paths);
        auto const result = co_await host->runCommand({.text = FileCommands::measure(dialect, some),
                                                       .session = CommandSession::longWork,
                                                       .limit = FileCommands::measureLimit});
        total += FileCommands::totalSize(dialect, result.output);
    }
    co_return total;
}

} // namespace tw::HostFiles
