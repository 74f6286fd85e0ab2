#pragma once

#include "TWCore/Provider/Survey.h"

#include <string>
#include <unordered_set>
#include <vector>

namespace tw {

/// What may be deleted at the source of a move, once everything has been copied.
struct MoveCheck {
    std::vector<std::string> arrived; ///< whole and unchanged: these may be deleted
    std::vector<std::string> changed; ///< at the source, during the copy
    std::vector<std::string> unequal; ///< not the same at the target

    /// The source before and after the copy, and the target with its parts under the names of the source.
    struct Surveys {
        Survey before;
        Survey after;  ///< with the nodes of what is merged
        Survey target; ///< with the nodes of what is merged
    };

    /// Each name is judged by itself. A folder in `merged` has arrived if the folder at the target has all its entries,
    /// whatever else is there. Times are compared at the source only, since some file systems keep them less exactly.
    static MoveCheck of(std::vector<std::string> const &names, Surveys const &surveys,
                        std::unordered_set<std::string> const &merged);
};

} // namespace tw
