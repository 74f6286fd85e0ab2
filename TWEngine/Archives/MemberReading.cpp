#include "TWEngine/Archives/MemberReading.h"

#include "TWCore/Archives/ArchiveFailure.h"
#include "TWCore/Archives/ArchiveMemberCommand.h"
#include "TWCore/Async/ChildTask.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Archives/ArchiveChild.h"
#include "TWEngine/Archives/LocalArchiveTools.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Transfer/HostSlots.h"
#include "TWEngine/Transfer/TransferCommands.h"

namespace tw::MemberReading {

namespace {

constexpr std::chrono::milliseconds noPatience{0};

ChildCommand childHere(ArchiveMemberCommand::Here const &command)
{
    return {.program = command.program,
            .arguments = command.arguments,
            .environment = ArchiveChild::environment(inheritedEnvironment()), // as the names were listed
            .output = PipeEnd{},
            .error = PipeEnd{},
            .session = ChildCommand::Session::own};
}

Task<void> watchQuestions(EngineRuntime *engine, TransferChild::Shared child, std::optional<std::string> password)
{
    for (;;) {
        co_await engine->clock()->sleep(ArchiveChild::timeBetweenLooks);
        ArchiveChild::endIfItAsksAgain(*child, password);
    }
}

Task<ExitStatus> passOn(EngineRuntime *engine, TransferChild::Shared child, Member member, OneShotCommand::Taker taker)
{
    auto const context = co_await currentContext();
    auto const watching = ChildTask<void>::start(context, watchQuestions(engine, child, member.password));
    std::string buffer;
    for (;;) {
        buffer = co_await child->process().read(ChildOutput::standard, std::move(buffer));
        if (buffer.empty())
            break;
        buffer = co_await taker(std::move(buffer));
    }
    auto const status = co_await TransferChild::end(child);
    co_return status;
}

Task<void> runChild(EngineRuntime *engine, ChildCommand command, Member member, OneShotCommand::Taker taker)
{
    if (member.password)
        command.input = PipeEnd{};
    auto const child = co_await TransferChild::start(*engine, std::move(command));
    if (member.password)
        co_await ArchiveChild::answer(child, member.password);
    auto const ended = co_await outcomeOf(passOn(engine, child, member, std::move(taker)));
    if (!ended.value) {
        co_await TransferChild::endSoon(child, noPatience).withStop({});
        std::rethrow_exception(ended.failure);
    }
    if (auto const words = ArchiveChild::complaint(*ended.value, child->words()))
        std::rethrow_exception(ArchiveFailure::of("extract", member.name, *words));
}

Task<void> readHere(EngineRuntime *engine, Member member, OneShotCommand::Taker taker)
{
    auto const tools = co_await LocalArchiveTools::ofThisMachine(*engine);
    auto child = childHere(ArchiveMemberCommand::here(tools, member.archive.path(), member.name));
    co_await runChild(engine, std::move(child), member, std::move(taker));
}

Task<void> readThere(EngineRuntime *engine, std::string sshProgram, Member member, OneShotCommand::Taker taker)
{
    auto const host = member.archive.host();
    auto const dialect = co_await host->dialect();
    if (dialect != ShellDialect::posix)
        throw FileOperationError::Unsupported("reading a file of an archive on " + host->host());
    auto const capability = co_await host->archiveCapability();
    using ArchiveMemberCommand::Input;
    auto const input = member.password ? Input::password : Input::nothing;
    auto const command =
        ArchiveMemberCommand::there(capability, host->host(), member.archive.path(), member.name, input);
    auto options = co_await host->transportOptions();
    auto const slot = co_await HostSlots::shared()->take(host->host());
    auto child = TransferCommands::overSSH({.ssh = std::move(sshProgram)}, std::move(options), host->host(), command);
    child.output = PipeEnd{};
    co_await runChild(engine, std::move(child), member, std::move(taker));
}

} // namespace

Task<void> read(EngineRuntime &engine, std::string sshProgram, Member member, OneShotCommand::Taker taker)
{
    if (member.archive.host())
        return readThere(&engine, std::move(sshProgram), std::move(member), std::move(taker));
    return readHere(&engine, std::move(member), std::move(taker));
}

} // namespace tw::MemberReading
