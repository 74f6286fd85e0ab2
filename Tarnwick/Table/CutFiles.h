#pragma once

#include <string>
#include <unordered_set>

namespace tw {

/// Files that were cut, and stay where they are until they are pasted.
struct CutFiles {
    std::string connection; ///< "local", or a host
    std::string directory;
    std::unordered_set<std::string> names;
};

} // namespace tw
