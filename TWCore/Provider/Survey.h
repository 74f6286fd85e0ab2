#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace tw {

/// What there is below some names of a folder, to be compared with another time or another place.
///
/// Constant in size for each name, since a tree of a million files is compared too: what is below a name is summed up
/// in digests that do not depend on the order.
struct Survey {
    struct Part {
        std::int64_t files = 0; ///< everything that is not a folder
        std::int64_t folders = 0;
        std::int64_t bytes = 0;  ///< of regular files
        std::uint64_t shape = 0; ///< of relative paths, kinds, sizes of regular files and targets of links
        std::uint64_t times = 0; ///< of relative paths and modification times

        friend bool operator==(Part const &, Part const &) = default;
    };

    std::map<std::string, Part> parts = {}; ///< by name; a name that does not exist is left out

    friend bool operator==(Survey const &, Survey const &) = default;
};

} // namespace tw
