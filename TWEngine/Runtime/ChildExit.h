#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Runtime/ChildCommand.h"
#include "TWEngine/Runtime/ExitStatus.h"

#include <sys/types.h>

namespace tw {

class IoThread;

/// Waits for the end of one child process on the I/O thread, collects it, and reports it to every waiter.
///
/// Threads: all operations may be called from anywhere.
/// Lifetime: the I/O thread outlives it. The child is collected even if this object is destroyed first. If the I/O
/// thread ends before the child, the child is killed, since no process owns it any more, unless it was left.
class ChildExit {
public:
    /// Takes over a child that is not collected yet. Throws SpawnError after it has killed and collected the child.
    ChildExit(IoThread &io, pid_t child, ChildCommand::Session session);

    /// See ChildProcess::wait.
    Task<ExitStatus> wait() const;

    /// See ChildProcess::leave.
    void leave() const;

    /// See ChildProcess::leaveDescendants.
    void leaveDescendants() const;

    /// Does nothing if the child is collected or left.
    void signal(int number) const;

private:
    struct Watch;

    std::shared_ptr<Watch> const watch;
};

} // namespace tw
