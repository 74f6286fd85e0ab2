#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace tw::test {

/// A process of this machine, as it was when it was looked at.
struct ProcessRecord {
    pid_t id = 0;
    pid_t parent = 0;
    char state = '?';            ///< as in /proc/PID/stat: Z is one that has ended and is not collected yet
    unsigned long long born = 0; ///< in ticks since the machine started; tells it from a later one with its number
    std::string name;            ///< at most 15 bytes of its program's name

    bool hasEnded() const noexcept { return state == 'Z' || state == 'X'; }
};

/// The children of a process, their children, and so on, those included that have ended and are not collected.
std::vector<ProcessRecord> descendantsOf(pid_t ancestor);

/// Nothing if there is no such process.
std::optional<ProcessRecord> recordOf(pid_t process);

/// Ends that process by SIGKILL and blocks until it has ended. Nothing if it has ended before.
void killAndWait(ProcessRecord const &process);

} // namespace tw::test
