#pragma once

#include "TWEngine/Runtime/ChildCommand.h"

#include <string>

namespace tw {

/// Where the program keeps what is the user's and not a setting, as the XDG Base Directory Specification has it.
///
/// None of it need exist.
struct UserPaths {
    std::string caches;  ///< a folder; what is in it may be lost
    std::string edits;   ///< a folder: remote files while they are edited here
    std::string lifeLog; ///< a file

    /// From an environment. `accountHome` is the home that the password database knows, for an environment without one.
    ///
    /// A variable that is empty or not absolute counts as not set, as XDG has it: a relative one would mean
    /// another place for every folder that the program is started in.
    static UserPaths from(Environment const &environment, std::string const &accountHome);

    /// Of the user who runs this process.
    static UserPaths ofThisUser();
};

} // namespace tw
