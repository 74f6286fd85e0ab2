#pragma once

#include "TWEngine/Runtime/ChildCommand.h"
#include "TWEngine/Runtime/ChildExit.h"
#include "TWEngine/Runtime/ChildPipe.h"
#include "TWEngine/Runtime/PipeError.h"
#include "TWEngine/Runtime/SpawnError.h"

#include <expected>

namespace tw {

/// Which of a child's two outputs.
enum class ChildOutput { standard, error };

/// A running program, and our ends of its pipes.
///
/// Threads: all operations may be called from anywhere; each end is used by one task at a time, any number wait for
/// the exit.
/// Lifetime: outlived by the I/O thread. When the last handle goes, the child is told to terminate and our ends are
/// closed; it is collected in the background, so that none is ever left as a zombie. A read or write under way then
/// fails, a wait under way is answered.
/// Cancellation: a stopped task goes on with Cancelled, and the process can be used as before.
class ChildProcess {
    struct Ends;

public:
    /// Starts `command`. Blocks until the program is loaded, some milliseconds: files are opened, with paths relative
    /// to this process's directory, a named pipe among them until somebody opens its other side.
    static std::expected<std::shared_ptr<ChildProcess>, SpawnError> start(IoThread &io, ChildCommand const &command);

    ChildProcess(IoThread &io, Ends ends, pid_t child, ChildCommand::Group group);
    ~ChildProcess();

    ChildProcess(ChildProcess const &) = delete;
    ChildProcess &operator=(ChildProcess const &) = delete;

    /// For telling it to a person or a log; a signal to it might reach another by the time it is sent.
    pid_t processId() const noexcept { return id; }

    /// What the child has written, at least one byte; an empty string is the end of its output.
    ///
    /// At most as many bytes as `buffer` has capacity, and into its memory: hand the same buffer in again and nothing
    /// is allocated. One with less than 4 KiB is enlarged to 64 KiB. Throws PipeError.
    Task<std::string> read(ChildOutput output, std::string buffer = {}) const;

    /// Hands all of `bytes` to the child, and answers their buffer, to be used again. Throws PipeError, EPIPE if the
    /// child does not read any more. If it fails or is stopped, a part may have been written.
    Task<std::string> write(std::string bytes) const;

    /// The child sees the end of its input behind what was written. A write under way fails. Closing twice, or an
    /// input that is no pipe, is nothing.
    void closeInput() const noexcept;

    /// How it ended, once it has. Its outputs may be open longer, if it has passed them on.
    Task<ExitStatus> wait() const { return exit.wait(); }

    /// Asks it to end (SIGTERM), also if it is stopped. Nothing if it has ended.
    void terminate() const;

    /// Ends it (SIGKILL). Nothing if it has ended.
    void kill() const;

private:
    pid_t const id;
    ChildExit const exit;
    std::unique_ptr<ChildPipe> const input;
    std::unique_ptr<ChildPipe> const output;
    std::unique_ptr<ChildPipe> const error;
};

} // namespace tw
