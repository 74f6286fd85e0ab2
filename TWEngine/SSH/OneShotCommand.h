#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Runtime/ChildCommand.h"
#include "TWEngine/Runtime/ExitStatus.h"

#include <functional>
#include <string>

namespace tw {

class IoThread;

/// A program that is run once to its end.
namespace OneShotCommand {

struct Result {
    ExitStatus status;
    std::string output; ///< the beginning of what it printed, where that is a pipe
    std::string errors; ///< the same of standard error
};

/// Runs `command`, keeping the first `kept` bytes of each output that is a pipe and reading the rest away, so that the
/// program never waits for us. Stopped, it terminates the program. The I/O thread outlives it. Throws SpawnError.
Task<Result> run(IoThread &io, ChildCommand command, std::size_t kept);

/// Takes a piece of what a program prints, and answers its memory to be used again.
using Taker = std::function<Task<std::string>(std::string)>;

/// The same with all of its standard output, a pipe, going to `taker`. What that throws ends the program.
Task<Result> run(IoThread &io, ChildCommand command, std::size_t kept, Taker taker);

} // namespace OneShotCommand

} // namespace tw
