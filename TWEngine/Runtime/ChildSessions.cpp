#include "TWEngine/Runtime/ChildSessions.h"

#include <signal.h>

namespace tw {

void ChildSessions::add(pid_t leader)
{
    std::lock_guard const lock(mutex);
    leaders.insert(leader);
}

void ChildSessions::remove(pid_t leader)
{
    std::lock_guard const lock(mutex);
    leaders.erase(leader);
}

void ChildSessions::kill()
{
    std::lock_guard const lock(mutex);
    for (auto const leader : leaders)
        ::kill(-leader, SIGKILL);
}

} // namespace tw
