#pragma once

#include "TWCore/Provider/Survey.h"

#include <string>
#include <vector>

namespace tw {

/// What may go from the source of a move, once everything has been copied.
struct MoveCheck {
    std::vector<std::string> arrived; ///< whole and unchanged: these may go
    std::vector<std::string> changed; ///< at the source, during the copy
    std::vector<std::string> unequal; ///< the target has something else

    /// Each name is judged by itself. `target` has its parts by the names of the source. Times are compared at the
    /// source only, since some file systems keep them less exactly.
    static MoveCheck of(std::vector<std::string> const &names, Survey const &before, Survey const &after,
                        Survey const &target);
};

} // namespace tw
