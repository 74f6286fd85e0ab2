#pragma once

#include <cstdint>
#include <string>

#include <sys/types.h>

namespace tw {

/// What a cp that runs is at, as the kernel knows it.
struct CopyingChild {
    std::int64_t written = 0; ///< bytes of all it has written, the file under way included
    std::string item = {};    ///< the file that it reads, from the source folder on; empty between two files

    /// Looks at the process, whose files lie in `from` and go to `to`. Zero for what the system does not show. Blocks.
    static CopyingChild look(pid_t process, std::string const &from, std::string const &to);
};

} // namespace tw
