#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace tw {

/// What the system tells about running processes. Each answer is nothing where it tells nothing.
struct ProcessTable {
    /// The file that a process runs.
    struct Executable {
        std::string path = {}; ///< without links in it
        dev_t device = 0;
        ino_t inode = 0;

        /// The same name and the same file. The name alone may mean another file where the process has other mounts.
        friend bool operator==(Executable const &, Executable const &) = default;
    };

    /// Nothing as well for a file that was deleted since: its name, to which the system adds " (deleted)", may lead to
    /// anything by now.
    std::function<std::optional<Executable>(pid_t)> executableOf;
    std::function<std::optional<pid_t>(pid_t)> parentOf;

    static ProcessTable ofThisSystem();

    /// The parent in the text of /proc/PID/stat.
    static std::optional<pid_t> parentInStat(std::string_view text);
};

} // namespace tw
