#include "TWEngine/Archives/ArchiveChild.h"

#include "TWCore/Archives/ArchiveFailure.h"
#include "TWCore/Async/ChildTask.h"
#include "TWEngine/Transfer/TransferCommands.h"

#include <filesystem>
#include <fstream>

namespace tw::ArchiveChild {

namespace {

constexpr std::chrono::milliseconds noPatience{0};

ChildCommand programOf(std::string program, std::vector<std::string> arguments)
{
    return {.program = std::move(program),
            .arguments = std::move(arguments),
            .environment = environment(inheritedEnvironment()),
            .error = PipeEnd{},
            .session = ChildCommand::Session::own,
            .end = ChildCommand::End::withProgram};
}

std::int64_t fieldOf(std::filesystem::path const &file, std::string_view name)
{
    std::ifstream lines(file);
    std::string word;
    std::int64_t value = 0;
    while (lines >> word) {
        if (word == name)
            return lines >> value ? value : 0;
    }
    return 0;
}

/// How far a process is in a file that it has open.
std::int64_t positionIn(std::filesystem::path const &process, std::string const &file)
{
    std::int64_t furthest = 0;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(process / "fd", error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry->path(), gone) == file)
            furthest = std::max(furthest, fieldOf(process / "fdinfo" / entry->path().filename(), "pos:"));
    }
    return furthest;
}

Task<void> watch(ArchiveWork::Shared work, TransferChild::Shared child, Job job)
{
    for (;;) {
        co_await work->engine.clock()->sleep(timeBetweenLooks);
        endIfItAsksAgain(*child, work->password);
        TransferProgress progress{.total = job.total, .item = job.item};
        progress.bytes = bytesRead(child->process().processId(), job.reads);
        if (job.total)
            progress.bytes = std::min(progress.bytes, *job.total);
        work->report(progress);
    }
}

Task<ExitStatus> untilExit(ArchiveWork::Shared work, TransferChild::Shared child, Job job)
{
    auto const context = co_await currentContext();
    auto const watching = ChildTask<void>::start(context, watch(work, child, std::move(job)));
    auto const status = co_await TransferChild::end(child);
    co_return status;
}

} // namespace

Environment environment(Environment inherited)
{
    auto environment = TransferCommands::tarEnvironment(std::move(inherited));
    environment.insert_or_assign("TAR_OPTIONS", "--no-unquote"); // of GNU tar alone
    // In another encoding some tools spoil names, and their words could not be told apart.
    environment.insert_or_assign("LC_ALL", "C.UTF-8");
    environment.erase("LANGUAGE"); // GNU tar would translate its words all the same, and " link to " in a listing
    // zip and unzip have options of users there.
    for (auto const *const each : {"ZIP", "ZIPOPT", "UNZIP", "UNZIPOPT", "GZIP"})
        environment.erase(each);
    return environment;
}

ChildCommand command(ArchiveCommands::Call const &call)
{
    auto command = programOf(call.program, call.words());
    command.workingDirectory = call.folder;
    return command;
}

ChildCommand command(ArchiveScripts::Script const &script)
{
    std::vector<std::string> arguments{"-c", script.text, "sh"};
    arguments.insert(arguments.end(), script.arguments.begin(), script.arguments.end());
    return programOf("/bin/sh", std::move(arguments));
}

Task<void> run(ArchiveWork::Shared work, ChildCommand command, Job job)
{
    bool const isAnswered = std::holds_alternative<PipeEnd>(command.input);
    auto const child = co_await TransferChild::start(work->engine, std::move(command));
    if (isAnswered)
        co_await answer(child, work->password);
    auto const exit = co_await outcomeOf(untilExit(work, child, job));
    if (!exit.value) {
        co_await TransferChild::endSoon(child, noPatience).withStop({});
        std::rethrow_exception(exit.failure);
    }
    if (auto const words = complaint(*exit.value, child->words()))
        std::rethrow_exception(ArchiveFailure::of(job.operation, job.path, *words));
}

Task<void> run(ArchiveWork::Shared work, ArchiveCommands::Call call, Job job)
{
    auto child = command(call);
    if (work->password)
        child.input = PipeEnd{};
    return run(std::move(work), std::move(child), std::move(job));
}

Task<void> answer(TransferChild::Shared child, std::optional<std::string> password)
{
    // A program that asks for nothing may have ended already.
    if (password)
        co_await outcomeOf(child->process().write(*password + "\n"));
    child->process().closeInput();
}

void endIfItAsksAgain(TransferChild const &child, std::optional<std::string> const &password)
{
    std::size_t const answers = password ? 1 : 0;
    if (ArchiveFailure::questionsIn(child.words()) > answers)
        child.process().terminate();
}

std::int64_t bytesRead(pid_t process, std::string const &file)
{
    auto const place = std::filesystem::path("/proc") / std::to_string(process);
    if (file.empty())
        return fieldOf(place / "io", "rchar:");
    auto furthest = positionIn(place, file);
    // GNU tar has a child decompress the archive.
    std::ifstream children(place / "task" / std::to_string(process) / "children");
    for (std::string child; children >> child;)
        furthest = std::max(furthest, positionIn(std::filesystem::path("/proc") / child, file));
    return furthest;
}

std::optional<std::string> complaint(ExitStatus status, std::string words)
{
    if (status.isSuccess())
        return std::nullopt;
    return words.empty() ? status.text() : std::move(words);
}

} // namespace tw::ArchiveChild
