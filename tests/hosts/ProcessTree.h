#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace tw::test {

/// A process of this machine at the time of the call.
struct ProcessRecord {
    pid_t id = 0;
    pid_t parent = 0;
    char state = '?'; ///< as in /proc/PID/stat; Z has ended and is not collected yet
    unsigned long long born =
        0;            ///< in ticks since the machine started; distinguishes it from a later process with its id
    std::string name; ///< at most 15 bytes of the name of its program

    bool hasEnded() const noexcept { return state == 'Z' || state == 'X'; }
};

/// All descendants of a process, also those that have ended and are not collected.
std::vector<ProcessRecord> descendantsOf(pid_t ancestor);

/// Nothing if there is no such process.
std::optional<ProcessRecord> recordOf(pid_t process);

/// Ends the process with SIGKILL and blocks until it has ended. Does nothing if it has ended before.
void killAndWait(ProcessRecord const &process);

} // namespace tw::test
