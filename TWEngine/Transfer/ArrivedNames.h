#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Runtime/ThreadLane.h"
#include "TWEngine/Transfer/Blamed.h"

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace tw {

class EngineRuntime;

/// Which of some names of this machine have their copy in another folder, as cp makes it: of the same kind, with the
/// same time and mode, and of the same size if it is a file.
struct ArrivedNames {
    /// A copy that is under way, or has ended before its end.
    struct Copying {
        std::vector<std::string> names;
        timespec begun;
        Blamed blamed = {};
    };

    std::vector<std::string> complete = {};
    std::vector<std::string> partial = {};        ///< something of that name is there
    std::vector<std::string> untouched = {};      ///< nothing is
    std::optional<std::string> firstMissing = {}; ///< the first that is not complete
    std::int64_t files = 0;                       ///< everything but folders that is complete, in folders too

    /// cp gives a folder its time last, also if an entry in it has failed. So a folder is complete if its copy was
    /// changed since the beginning and cp complains about nothing in it.
    ///
    /// Costs a look at each entry that is there by then, and nothing for those that are not.
    /// Cancellation: throws Cancelled.
    static Task<ArrivedNames> find(EngineRuntime &engine, std::string from, std::string to, Copying copying,
                                   WorkPriority priority);
};

} // namespace tw
