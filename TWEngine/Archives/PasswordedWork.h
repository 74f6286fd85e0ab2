#pragma once

#include "TWCore/Provider/CommandHost.h"

namespace tw {

class EngineRuntime;

/// Runs a command on a host that reads a password. The password goes through the input of an ssh of its own: no command
/// line has it, and neither has the session, whose text a host may log.
namespace PasswordedWork {

struct Command {
    std::string text;  ///< for bash
    std::string token; ///< `EndableCommand::end(token)` ends it
    std::string password;
};

/// The same as HostWork::run. Of the output, a listing of some ten million members is kept.
Task<CommandResult> run(EngineRuntime &engine, std::string ssh, std::shared_ptr<CommandHost> host, Command command);

} // namespace PasswordedWork

} // namespace tw
