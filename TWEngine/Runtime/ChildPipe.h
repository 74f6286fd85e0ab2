#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Runtime/FileDescriptor.h"

#include <string>

namespace tw {

class IoThread;

/// Our end of a pipe to a child process.
///
/// What can be read or written at once is done at once, on the calling thread; only a pipe that is empty or full
/// makes its task wait.
///
/// Threads: one task at a time reads or writes; `close` may be called from anywhere.
/// Lifetime: outlived by the I/O thread. The destructor closes.
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

    /// Whoever reads or writes meanwhile, or later, gets a PipeError.
    void close() const noexcept;

private:
    struct Stream;

    std::shared_ptr<Stream> const stream;
};

} // namespace tw
