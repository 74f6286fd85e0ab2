#include "TWEngine/Archives/MemberReading.h"

#include "TWCore/Archives/ArchiveMemberCommand.h"
#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/Trimmed.h"
#include "TWEngine/Archives/LocalArchiveTools.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Transfer/HostSlots.h"
#include "TWEngine/Transfer/TransferCommands.h"

namespace tw::MemberReading {

namespace {

/// Of a tool's words.
constexpr std::size_t keptWords = 1024;

ChildCommand childHere(ArchiveMemberCommand::Here const &command)
{
    auto environment = TransferCommands::tarEnvironment(inheritedEnvironment());
    environment["LC_ALL"] = "C.UTF-8"; // as the names were listed
    return {.program = command.program,
            .arguments = command.arguments,
            .environment = std::move(environment),
            .output = PipeEnd{},
            .error = PipeEnd{},
            .session = ChildCommand::Session::own};
}

Task<void> runChild(EngineRuntime *engine, ChildCommand child, std::string name, OneShotCommand::Taker taker)
{
    auto const ended = co_await OneShotCommand::run(engine->io(), std::move(child), keptWords, std::move(taker));
    if (!ended.status.isSuccess())
        throw FileOperationError::Failed("extract", name, std::string(trimmed(repaired(ended.errors))));
}

Task<void> readHere(EngineRuntime *engine, Member member, OneShotCommand::Taker taker)
{
    auto const tools = co_await LocalArchiveTools::ofThisMachine(*engine);
    auto child = childHere(ArchiveMemberCommand::here(tools, member.archive.path(), member.name));
    co_await runChild(engine, std::move(child), member.name, std::move(taker));
}

Task<void> readThere(EngineRuntime *engine, std::string sshProgram, Member member, OneShotCommand::Taker taker)
{
    auto const host = member.archive.host();
    auto const dialect = co_await host->dialect();
    if (dialect != ShellDialect::posix)
        throw FileOperationError::Unsupported("reading a file of an archive on " + host->host());
    auto const capability = co_await host->archiveCapability();
    auto const command = ArchiveMemberCommand::there(capability, host->host(), member.archive.path(), member.name);
    auto options = co_await host->transportOptions();
    auto const slot = co_await HostSlots::shared()->take(host->host());
    auto child = TransferCommands::overSSH({.ssh = std::move(sshProgram)}, std::move(options), host->host(), command);
    child.output = PipeEnd{};
    co_await runChild(engine, std::move(child), member.name, std::move(taker));
}

} // namespace

Task<void> read(EngineRuntime &engine, std::string sshProgram, Member member, OneShotCommand::Taker taker)
{
    if (member.archive.host())
        return readThere(&engine, std::move(sshProgram), std::move(member), std::move(taker));
    return readHere(&engine, std::move(member), std::move(taker));
}

} // namespace tw::MemberReading
