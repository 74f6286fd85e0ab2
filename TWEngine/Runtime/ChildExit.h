#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Runtime/ChildCommand.h"
#include "TWEngine/Runtime/ExitStatus.h"

#include <sys/types.h>

namespace tw {

class IoThread;

/// The end of one child process: it is waited for on the I/O thread, collected there, and told to all who ask.
///
/// Threads: all operations may be called from anywhere.
/// Lifetime: outlived by the I/O thread. The child is collected whether or not this object still exists. Should the
/// I/O thread end before the child, the child is killed: it is nobody's any more.
class ChildExit {
public:
    /// Takes over a child that nobody has collected. Throws SpawnError, and the child is dead and collected then.
    ChildExit(IoThread &io, pid_t child, ChildCommand::Group group);

    /// See ChildProcess::wait.
    Task<ExitStatus> wait() const;

    /// Nothing if the child has been collected.
    void signal(int number) const;

private:
    struct Watch;

    std::shared_ptr<Watch> const watch;
};

} // namespace tw
