#pragma once

#include "TWCore/Provider/CommandHost.h"

namespace tw {

class EngineRuntime;

/// Runs a long command of an operation in the work session of a host.
namespace HostWork {

/// Work within a host may take long, and nobody sees it grow.
inline constexpr std::chrono::seconds longestWork{3600};

/// `text` is a command that `EndableCommand::end(token)` ends, or one of a Windows host, which cannot be ended.
///
/// Cancellation: ends the command on the host, by a command in another session, and throws Cancelled. The answer is not
/// waited for: the session gives it when the command has ended.
/// Errors: what `CommandHost::runCommand` throws.
Task<CommandResult> run(EngineRuntime &engine, std::shared_ptr<CommandHost> host, std::string token, std::string text,
                        CommandEffect effect = CommandEffect::changes, std::chrono::seconds limit = longestWork);

/// Ends such a command, best effort and whether or not the caller is being stopped.
Task<void> end(EngineRuntime &engine, std::shared_ptr<CommandHost> host, std::string token);

} // namespace HostWork

} // namespace tw
