#pragma once

#include "TWCore/Async/Task.h"

#include <optional>
#include <string>
#include <vector>

namespace tw {

class EngineRuntime;

/// Which of some files of this machine have their copy in another folder, as cp makes it: of the same kind, with the
/// same size and time.
struct ArrivedNames {
    std::vector<std::string> complete = {};
    std::vector<std::string> partial = {};        ///< something of that name is there
    std::vector<std::string> untouched = {};      ///< nothing is
    std::optional<std::string> firstMissing = {}; ///< the first that is not complete

    static Task<ArrivedNames> find(EngineRuntime &engine, std::string from, std::string to,
                                   std::vector<std::string> names);
};

} // namespace tw
