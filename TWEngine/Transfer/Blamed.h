#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// Which names a program that failed complains about.
struct Blamed {
    std::set<std::string> names = {};
    bool isEverything = false; ///< a complaint could not be read: any name may be meant

    enum class Unreadable {
        meansEverything,
        meansNothing ///< it is of ssh, or of a tar that was ended
    };

    /// From what a tar wrote to its standard error, of names that it was given.
    static Blamed in(std::string_view words, std::vector<std::string> const &given, Unreadable unreadable);

    /// From what a cp wrote that was given names of its working folder. It puts a path into quotes, there or below
    /// `to`.
    static Blamed inCopy(std::string_view words, std::vector<std::string> const &given, std::string const &to);
};

} // namespace tw
