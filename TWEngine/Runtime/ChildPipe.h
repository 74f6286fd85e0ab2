#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Runtime/FileDescriptor.h"

#include <memory>
#include <span>
#include <string>

namespace tw {

class IoThread;

/// Our end of a pipe to a child process.
///
/// Reads and writes on the calling thread if the pipe is ready; only an empty or full pipe suspends the task.
///
/// Threads: one task at a time reads or writes; `close` may be called from anywhere.
/// Lifetime: the I/O thread outlives it. The destructor closes.
class ChildPipe {
public:
    /// Makes `end` non-blocking. Throws SpawnError.
    ChildPipe(IoThread &io, FileDescriptor end);
    ~ChildPipe();

    ChildPipe(ChildPipe const &) = delete;
    ChildPipe &operator=(ChildPipe const &) = delete;

    /// See ChildProcess::read.
    Task<std::string> read(std::string buffer) const;

    /// See ChildProcess::write.
    Task<std::string> write(std::string bytes) const;

    /// See ChildProcess::moveOutput.
    Task<std::size_t> moveTo(ChildPipe const &target, std::size_t most) const;

    /// See ChildProcess::copyOutput.
    Task<std::size_t> copyTo(ChildPipe const &target, std::size_t most) const;

    /// See ChildProcess::takeOutput.
    void take(std::span<char> bytes) const;

    /// See ChildProcess::dropOutput.
    void drop(std::size_t count) const;

    /// Reads and writes in flight, and later ones, throw PipeError.
    void close() const noexcept;

private:
    struct Stream;

    std::shared_ptr<Stream> stream;
};

} // namespace tw
