#pragma once

#include <mutex>
#include <set>

#include <sys/types.h>

namespace tw {

/// The children that have a session of their own, and so descendants that can be found when the program ends.
///
/// Threads: all operations may be called from anywhere.
class ChildSessions {
public:
    /// `leader` is a child that is not collected.
    void add(pid_t leader);

    /// Before the child is collected: its number may go to another process then.
    void remove(pid_t leader);

    /// Kills all of them, with their descendants.
    void kill();

private:
    std::mutex mutex;
    std::set<pid_t> leaders; ///< under the mutex
};

} // namespace tw
