#include "TWEngine/Archives/PasswordedWork.h"

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

Task<CommandResult> send(IoThread *io, std::string ssh, std::shared_ptr<CommandHost> host, Command command)
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
    auto ended = co_await OneShotCommand::run(*io, std::move(child), mostBytes, nullptr, command.password + "\n");
    bool const isOfClient = ended.status.number == statusOfClient && ended.output.empty();
    co_return CommandResult{.output = std::move(isOfClient ? ended.errors : ended.output),
                            .status = ended.status.number};
}

} // namespace

Task<CommandResult> run(EngineRuntime &engine, std::string ssh, std::shared_ptr<CommandHost> host, Command command)
{
    auto const token = command.token;
    return HostWork::run(engine, host, token, send(&engine.io(), std::move(ssh), host, std::move(command)));
}

} // namespace tw::PasswordedWork
