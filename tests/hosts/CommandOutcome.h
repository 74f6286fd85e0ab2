#pragma once

#include "TWEngine/Runtime/ChildCommand.h"
#include "TWEngine/Runtime/ExitStatus.h"

namespace tw {
class IoThread;
} // namespace tw

namespace tw::test {

/// What became of a command that has ended.
struct CommandOutcome {
    ExitStatus status;
    std::string output;
    std::string error;
};

/// Runs a command to its end, with `input` as its standard input, and blocks until then. Its ends are replaced.
/// Throws SpawnError.
CommandOutcome runCommand(IoThread &io, ChildCommand command, std::string input = {});

} // namespace tw::test
