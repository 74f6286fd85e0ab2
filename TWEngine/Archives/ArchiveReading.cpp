#include "TWEngine/Archives/ArchiveReading.h"

#include "TWCore/Archives/ArchiveFailure.h"
#include "TWCore/Archives/ArchiveListCommand.h"
#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Shell/EndableCommand.h"
#include "TWEngine/Archives/ArchiveChild.h"
#include "TWEngine/Archives/LocalArchiveTools.h"
#include "TWEngine/Archives/PasswordedWork.h"
#include "TWEngine/Platform/RandomDigits.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/OneShotCommand.h"
#include "TWEngine/Transfer/HostWork.h"

namespace tw::ArchiveReading {

namespace {

using ArchiveListCommand::Form;

constexpr auto operation = "list archive";

constexpr std::size_t tokenDigits = 16;

/// Of a tool's words. bsdtar repeats its question for a passphrase thousands of times.
constexpr std::size_t keptWords = 1024;

std::exception_ptr failure(std::string const &path, std::string_view words)
{
    return ArchiveFailure::of(operation, path, trimmed(repaired(words.substr(0, keptWords))));
}

/// All of a program's output.
struct Captured {
    std::string bytes;
};

Task<std::string> keep(std::shared_ptr<Captured> all, std::string piece)
{
    if (all->bytes.size() + piece.size() > mostBytes)
        throw FileOperationError::Unsupported("an archive with so many members");
    all->bytes += piece;
    co_return piece;
}

/// In an environment in which the tools write what DatedListing reads.
ChildCommand childFor(ArchiveListCommand::Here const &command)
{
    auto environment = ArchiveChild::environment(inheritedEnvironment());
    if (command.form == Form::gnuTar || command.form == Form::bsdTar)
        environment["TZ"] = "UTC";
    return {.program = command.program,
            .arguments = command.arguments,
            .environment = std::move(environment),
            .output = PipeEnd{},
            .error = PipeEnd{},
            // Of its own, so that a stop also reaches what it has started to decompress, and no terminal is asked.
            .session = ChildCommand::Session::own};
}

Task<ArchiveMembers> parsed(EngineRuntime *engine, Form form, std::shared_ptr<Captured> output)
{
    return engine->workers().run(WorkPriority::interactive, [form, output, clock = engine->clock()] {
        return ArchiveListCommand::parse(form, output->bytes, clock->now());
    });
}

Task<ArchiveMembers> readHere(EngineRuntime *engine, std::string path, Access access)
{
    auto const tools = co_await LocalArchiveTools::ofThisMachine(*engine);
    auto const command = ArchiveListCommand::here(tools, path);
    auto const output = std::make_shared<Captured>();
    auto child = childFor(command);
    std::string input;
    if (access.password) {
        child.input = PipeEnd{};
        input = *access.password + "\n";
    }
    auto const ended = co_await OneShotCommand::run(
        engine->io(), std::move(child), keptWords,
        [output](std::string piece) { return keep(output, std::move(piece)); }, std::move(input));
    if (!ended.status.isSuccess())
        std::rethrow_exception(failure(path, ended.errors));
    auto members = co_await parsed(engine, command.form, output);
    co_return members;
}

Task<ArchiveMembers> readThere(EngineRuntime *engine, std::string path, std::shared_ptr<CommandHost> host,
                               Access access)
{
    auto const capability = co_await host->archiveCapability();
    auto const dialect = co_await host->dialect();
    auto const command = ArchiveListCommand::there(dialect, capability, host->host(), path);
    auto const token = randomDigits(tokenDigits);
    auto text =
        dialect == ShellDialect::posix ? EndableCommand::text(token, {command.program}, command.text) : command.text;
    // tar takes none to list members.
    bool const isAsked = access.password && command.form == Form::sevenZip;
    auto running = isAsked ? PasswordedWork::run(*engine, access.ssh, host, {text, token, *access.password})
                           : HostWork::run(*engine, host, token, text, CommandEffect::none, limitOnHosts);
    auto result = co_await std::move(running);
    auto const output = std::make_shared<Captured>(std::move(result.output));
    auto members = co_await parsed(engine, command.form, output);
    // What the tool has said about a failure is among its output, and no member.
    if (result.status != 0 && members.entries.empty())
        std::rethrow_exception(failure(path, output->bytes));
    co_return members;
}

} // namespace

Task<ArchiveMembers> read(EngineRuntime &engine, TransferEndpoint file, Access access)
{
    if (file.host())
        return readThere(&engine, file.path(), file.host(), std::move(access));
    return readHere(&engine, file.path(), std::move(access));
}

} // namespace tw::ArchiveReading
