#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// Which names a tar that failed complains about.
struct Blamed {
    std::set<std::string> names = {};
    bool isEverything = false; ///< a complaint could not be read: any name may be meant

    enum class Unreadable {
        meansEverything,
        meansNothing ///< it is of ssh, or of a tar that was ended
    };

    /// From what it wrote to its standard error, of names that it was given.
    static Blamed in(std::string_view words, std::vector<std::string> const &given, Unreadable unreadable);
};

} // namespace tw
