#pragma once

#include "TWEngine/Runtime/ChildCommand.h"
#include "TWEngine/Runtime/ChildExit.h"
#include "TWEngine/Runtime/ChildPipe.h"
#include "TWEngine/Runtime/PipeError.h"
#include "TWEngine/Runtime/SpawnError.h"

#include <expected>

namespace tw {

/// One of the two outputs of a child.
enum class ChildOutput { standard, error };

/// A running program, and our ends of its pipes.
///
/// Threads: all operations may be called from anywhere. One task at a time uses each end; any number of tasks may wait
/// for the exit. Lifetime: the I/O thread outlives it. The destructor asks the child to terminate and closes our ends;
/// the child is collected in the background, so that no zombie stays. A read or write in flight fails, a wait in flight
/// is answered. Cancellation: a stopped task gets Cancelled, and the process can be used as before.
class ChildProcess {
    struct Ends;

public:
    /// Starts `command`. Blocks for some milliseconds, until the program is loaded. Relative paths of files start at
    /// the directory of this process; opening a named pipe blocks until another process opens its other side.
    static std::expected<std::shared_ptr<ChildProcess>, SpawnError> start(IoThread &io, ChildCommand const &command);

    ChildProcess(IoThread &io, Ends ends, pid_t child, ChildCommand::Session session);
    ~ChildProcess();

    ChildProcess(ChildProcess const &) = delete;
    ChildProcess &operator=(ChildProcess const &) = delete;

    /// For messages and logs only; a signal to it could reach another process by then.
    pid_t processId() const noexcept { return id; }

    /// Reads at least one byte of the output; an empty string means its end.
    ///
    /// Reads into `buffer`, up to its capacity: a caller that passes the same buffer again allocates nothing. A buffer
    /// of less than 4 KiB is enlarged to 64 KiB. Throws PipeError.
    Task<std::string> read(ChildOutput output, std::string buffer = {}) const;

    /// Writes all of `bytes` to the child, and returns their buffer for reuse. Throws PipeError, EPIPE if the child
    /// does not read any more. After an error or a stop, a part may have been written.
    Task<std::string> write(std::string bytes) const;

    /// Moves at least one byte and at most `most` of the standard output into the input of `target`, without reading
    /// them; 0 means the end of the output. Uses both ends. Throws PipeError, EPIPE if `target` does not read any more.
    /// A stopped task has moved nothing.
    Task<std::size_t> moveOutput(ChildProcess const &target, std::size_t most) const;

    /// The same, but what has passed is still in the output, to be taken or dropped.
    Task<std::size_t> copyOutput(ChildProcess const &target, std::size_t most) const;

    /// Fills `bytes` from the standard output, which is known to have so many. Throws PipeError.
    void takeOutput(std::span<char> bytes) const;

    /// The same without reading them.
    void dropOutput(std::size_t count) const;

    /// The child sees the end of its input after the bytes that were written. A write in flight fails. Does nothing on
    /// a closed input, or on an input that is no pipe.
    void closeInput() const noexcept;

    /// Waits for the exit. The outputs may stay open longer if a descendant has inherited them.
    Task<ExitStatus> wait() const { return exit.wait(); }

    /// The child is a program of its own from now on: no signal reaches it, not even that of the destructor, and it may
    /// outlive this process. It is collected when it ends, without a task that waits.
    void leave() const;

    /// From now on signals reach the child only, also if it has a session of its own.
    void leaveDescendants() const;

    /// Sends SIGTERM, and SIGCONT so that a stopped child ends too. Does nothing after the exit.
    void terminate() const;

    /// Sends SIGKILL. Does nothing after the exit.
    void kill() const;

private:
    pid_t const id;
    ChildExit const exit;
    std::unique_ptr<ChildPipe> const input;
    std::unique_ptr<ChildPipe> const output;
    std::unique_ptr<ChildPipe> const error;
};

} // namespace tw
