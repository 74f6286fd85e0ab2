#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Runtime/ChildCommand.h"
#include "TWEngine/Runtime/ExitStatus.h"

#include <functional>
#include <string>

namespace tw {

class IoThread;

/// Runs a program once, to its end.
namespace OneShotCommand {

struct Result {
    ExitStatus status;
    std::string output; ///< the beginning of standard output, if that is a pipe
    std::string errors; ///< the beginning of standard error, if that is a pipe
};

/// Runs `command`. Keeps the first `kept` bytes of each output that is a pipe, and reads and drops the rest, so that
/// the program never blocks on a full pipe.
///
/// Lifetime: the I/O thread outlives the task.
/// Cancellation: the program has got its signal before the caller resumes.
/// Errors: SpawnError.
Task<Result> run(IoThread &io, ChildCommand command, std::size_t kept);

/// Takes a piece of a program's output, and returns its memory for the next piece.
using Taker = std::function<Task<std::string>(std::string)>;

/// The same, with all of standard output, which is a pipe, passed to `taker`. An exception of `taker` ends the program.
Task<Result> run(IoThread &io, ChildCommand command, std::size_t kept, Taker taker);

/// The same, with `input` written to standard input, which is a pipe. A program that does not read it all is no error.
Task<Result> run(IoThread &io, ChildCommand command, std::size_t kept, Taker taker, std::string input);

} // namespace OneShotCommand

} // namespace tw
