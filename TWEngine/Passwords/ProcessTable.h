#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace tw {

/// The running processes of the system. Each function returns nothing if the system does not answer.
struct ProcessTable {
    /// The file that a process runs.
    struct Executable {
        std::string path = {}; ///< with links resolved
        dev_t device = 0;
        ino_t inode = 0;

        /// The same path and the same file. The path alone may name another file in a process with other mounts.
        friend bool operator==(Executable const &, Executable const &) = default;
    };

    /// Nothing also for a file that was deleted after the start: its path may name another file by now.
    std::function<std::optional<Executable>(pid_t)> executableOf;
    std::function<std::optional<pid_t>(pid_t)> parentOf;

    static ProcessTable ofThisSystem();

    /// The parent that the text of /proc/PID/stat names.
    static std::optional<pid_t> parentInStat(std::string_view text);
};

} // namespace tw
