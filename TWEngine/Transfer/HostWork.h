#pragma once

#include "TWCore/Provider/CommandHost.h"

#include <exception>

namespace tw {

class EngineRuntime;

/// Runs a long command of an operation on a host, so that it can be ended.
namespace HostWork {

/// A command that changes something was cancelled, and may go on all the same.
class MayGoOn final : public std::exception {
public:
    char const *what() const noexcept override { return "the host may go on with it"; }
};

/// `text` is a command that `EndableCommand::end(token)` ends, or one of a Windows host, which cannot be ended. `limit`
/// is for one that changes nothing, see HostCommand.
///
/// Cancellation: ends the command on the host, by a command in another session, and throws Cancelled. A command that is
/// under way has ended by then, unless it does not end within some seconds: of one that changes something, MayGoOn says
/// so.
/// Errors: what `CommandHost::runCommand` throws.
Task<CommandResult> run(EngineRuntime &engine, std::shared_ptr<CommandHost> host, std::string token, std::string text,
                        CommandEffect effect = CommandEffect::changes, std::optional<std::chrono::seconds> limit = {},
                        CommandSession session = CommandSession::longWork);

/// The same for a command that is sent in another way, with its answer as the result of `sending`. That is stopped only
/// if the host does not answer; otherwise it goes on until the command has ended.
Task<CommandResult> run(EngineRuntime &engine, std::shared_ptr<CommandHost> host, std::string token,
                        Task<CommandResult> sending);

} // namespace HostWork

} // namespace tw
