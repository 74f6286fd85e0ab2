#include "TWEngine/Editing/EditedFile.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/ReadError.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Provider/CommandHost.h"
#include "TWCore/Provider/FileSystemReader.h"
#include "TWCore/Provider/FileSystemWriter.h"
#include "TWCore/Shell/FileCommands.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Platform/Scratch.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/WholeFile.h"

#include <cerrno>

#include <fcntl.h>

namespace tw::EditedFile {

namespace {

using EditStaging::Copy;
using EditStaging::Stamp;
using Kind = EditCommand::Outcome::Kind;

constexpr auto lastLink = FileLanes::LastLink::keep;
constexpr auto priority = WorkPriority::interactive;

/// A copy as it is now.
struct Saved {
    std::optional<Stamp> stamp;
    std::optional<std::string> content; ///< of a small one
};

Saved savedNow(std::string const &path)
{
    FileDescriptor const file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (!file)
        throw ReadError::NotReadable(path, systemText(errno));
    Saved saved{.stamp = EditStaging::stampOf(path), .content = {}};
    constexpr auto most = EditCommand::mostContentInRequest;
    if (!saved.stamp || saved.stamp->size > static_cast<std::int64_t>(most))
        return saved;
    std::string content;
    if (auto const error = WholeFile::readUpTo(file.get(), most + 1, content); error != 0)
        throw ReadError::NotReadable(path, systemText(error));
    // The editor may have written while this read.
    if (std::ssize(content) != saved.stamp->size || EditStaging::stampOf(path) != saved.stamp)
        saved.stamp.reset();
    saved.content = std::move(content);
    return saved;
}

Task<CommandResult> run(Provider place, std::string command, CommandEffect effect, CommandSession session)
{
    auto const host = std::dynamic_pointer_cast<CommandHost>(place);
    auto result = co_await host->runCommand({.text = std::move(command), .session = session, .effect = effect});
    co_return result;
}

Task<ShellDialect> dialectOf(Provider place)
{
    auto const host = std::dynamic_pointer_cast<CommandHost>(place);
    auto const dialect = co_await host->dialect();
    co_return dialect;
}

EditCommand::Replacement replacementOf(Copy const &copy)
{
    auto const &record = copy.record;
    return {.path = record.path, .token = copy.token, .expected = record.version, .mode = record.mode};
}

Task<EditCommand::Outcome> send(Provider place, std::string command, CommandSession session)
{
    auto const result = co_await run(place, std::move(command), CommandEffect::changes, session);
    co_return EditCommand::outcome(result.output);
}

Task<void> drop(Provider place, ShellDialect dialect, std::string staged)
{
    auto command = EditCommand::dropStaged(dialect, staged);
    co_await outcomeOf(run(place, std::move(command), CommandEffect::none, CommandSession::work));
}

/// False if the copy was saved during the upload.
Task<bool> upload(EngineRuntime *engine, Provider place, Copy copy, std::string staged, Stamp before)
{
    auto const reader = std::dynamic_pointer_cast<FileSystemReader>(place);
    co_await reader->upload(copy.path, staged);
    auto const after = co_await engine->files().run(
        copy.path, lastLink, priority, [path = copy.path](std::string const &) { return EditStaging::stampOf(path); });
    co_return after == before;
}

Task<Result> putStaged(EngineRuntime *engine, Provider place, ShellDialect dialect, Copy copy, Stamp stamp,
                       std::string staged)
{
    auto const uploaded = co_await outcomeOf(upload(engine, place, copy, staged, stamp));
    if (!uploaded.value.value_or(false)) {
        co_await drop(place, dialect, staged);
        if (uploaded.failure)
            std::rethrow_exception(uploaded.failure);
        co_return Result();
    }
    auto command = EditCommand::replaceWithStaged(dialect, replacementOf(copy), staged);
    auto outcome = co_await send(place, std::move(command), CommandSession::work);
    co_return Result{.outcome = std::move(outcome), .stamp = stamp};
}

Task<Result> putLarge(EngineRuntime *engine, Provider place, Copy copy, Stamp stamp)
{
    auto const made =
        co_await run(place, EditCommand::stage(replacementOf(copy)), CommandEffect::changes, CommandSession::work);
    auto const staged = EditCommand::stagedFile(made.output);
    if (made.status != 0 || !staged)
        co_return Result{.outcome = {.words = std::string(trimmed(made.output))}, .stamp = stamp};
    auto result = co_await putStaged(engine, place, ShellDialect::posix, copy, stamp, *staged);
    co_return result;
}

} // namespace

bool isPossible(Provider const &place)
{
    return std::dynamic_pointer_cast<CommandHost>(place) && std::dynamic_pointer_cast<FileSystemReader>(place) &&
           std::dynamic_pointer_cast<FileSystemWriter>(place);
}

Task<EditCommand::State> stateOf(Provider place, std::string path)
{
    auto const dialect = co_await dialectOf(place);
    auto const result =
        co_await run(place, EditCommand::question(dialect, path), CommandEffect::none, CommandSession::interactive);
    auto state = EditCommand::state(result.output);
    if (!state)
        throw FileOperationError::Failed("reading", path, std::string(trimmed(result.output)));
    co_return *std::move(state);
}

Task<Fetched> fetch(EngineRuntime *engine, Provider place, EditStaging::Copy copy)
{
    // Asked first: what changes during the fetch is another version then.
    auto const there = co_await stateOf(place, copy.record.path);
    auto const reader = std::dynamic_pointer_cast<FileSystemReader>(place);
    co_await reader->download(copy.record.path, copy.path);
    copy.record.version = there.version;
    copy.record.mode = there.mode;
    auto filled = co_await engine->files().run(copy.path, lastLink, priority, [copy](std::string const &) {
        Scratch::markAsFetched(copy.path, copy.record.connection);
        auto known = copy;
        known.record.uploaded = EditStaging::stampOf(copy.path);
        EditStaging::keep(known);
        return known;
    });
    co_return Fetched{.copy = std::move(filled), .way = there.way};
}

Task<Result> put(EngineRuntime *engine, Provider place, EditStaging::Copy copy)
{
    auto const saved = co_await engine->files().run(copy.path, lastLink, priority,
                                                    [path = copy.path](std::string const &) { return savedNow(path); });
    if (!saved.stamp)
        co_return Result();
    auto const dialect = co_await dialectOf(place);
    if (dialect == ShellDialect::powershell) {
        auto staged = EditCommand::stagedOnWindows(replacementOf(copy));
        auto result = co_await putStaged(engine, place, dialect, copy, *saved.stamp, std::move(staged));
        co_return result;
    }
    if (!saved.content) {
        auto result = co_await putLarge(engine, place, copy, *saved.stamp);
        co_return result;
    }
    auto outcome =
        co_await send(place, EditCommand::replace(replacementOf(copy), *saved.content), CommandSession::interactive);
    co_return Result{.outcome = std::move(outcome), .stamp = saved.stamp};
}

} // namespace tw::EditedFile
