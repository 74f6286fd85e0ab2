#include "TWEngine/Archives/PasswordedWork.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Shell/ShellLiteral.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/OneShotCommand.h"
#include "TWEngine/Transfer/HostSlots.h"
#include "TWEngine/Transfer/HostWork.h"
#include "TWEngine/Transfer/TransferCommands.h"

namespace tw::PasswordedWork {

namespace {

constexpr std::size_t mostBytes = std::size_t{1} << 30U;

/// ssh's own, for a connection that failed.
constexpr int statusOfClient = 255;

Task<CommandResult> runOn(EngineRuntime *engine, std::string ssh, std::shared_ptr<CommandHost> host, Command command)
{
    auto const dialect = co_await host->dialect();
    if (dialect != ShellDialect::posix)
        throw FileOperationError::Unsupported("encrypted archives on a Windows host");
    auto options = co_await host->transportOptions();
    auto const slot = co_await HostSlots::shared()->take(host->host());
    // The shell of the session too: in others the function 7z of an EndableCommand is a syntax error.
    auto child = TransferCommands::overSSH({.ssh = std::move(ssh)}, std::move(options), host->host(),
                                           "bash -c " + ShellLiteral::posix("{ " + command.text + "\n} 2>&1"));
    child.input = PipeEnd{};
    child.output = PipeEnd{};
    auto running = OneShotCommand::run(engine->io(), std::move(child), mostBytes, nullptr, command.password + "\n");
    auto outcome = co_await outcomeOf(std::move(running));
    auto const context = co_await currentContext();
    if (context.stop.stop_requested())
        co_await HostWork::end(*engine, host, command.token);
    auto ended = outcome.take();
    bool const isOfClient = ended.status.number == statusOfClient && ended.output.empty();
    co_return CommandResult{.output = std::move(isOfClient ? ended.errors : ended.output),
                            .status = ended.status.number};
}

} // namespace

Task<CommandResult> run(EngineRuntime &engine, std::string ssh, std::shared_ptr<CommandHost> host, Command command)
{
    return runOn(&engine, std::move(ssh), std::move(host), std::move(command));
}

} // namespace tw::PasswordedWork
