#pragma once

#include "TWEngine/Runtime/ChildCommand.h"
#include "TWEngine/Runtime/ExitStatus.h"

namespace tw {
class IoThread;
} // namespace tw

namespace tw::test {

/// The outcome of a command.
struct CommandOutcome {
    ExitStatus status;
    std::string output;
    std::string error;
};

/// Runs a command with `input` as its standard input, and blocks until it ends. The ends of the command are replaced.
/// Throws SpawnError.
CommandOutcome runCommand(IoThread &io, ChildCommand command, std::string input = {});

} // namespace tw::test
