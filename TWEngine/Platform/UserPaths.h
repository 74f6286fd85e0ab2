#pragma once

#include "TWEngine/Runtime/ChildCommand.h"

#include <string>

namespace tw {

/// Where the program keeps the data of the user, according to the XDG Base Directory Specification.
///
/// None of the paths need exist.
struct UserPaths {
    std::string caches;     ///< a folder; its content may be deleted at any time
    std::string edits;      ///< a folder: remote files while they are edited here
    std::string scratch;    ///< a folder: local copies of files that lie elsewhere, see Scratch
    std::string lifeLog;    ///< a file
    std::string thumbnails; ///< a folder: small pictures of files, which all programs of the desktop share

    /// A variable that is empty or not absolute counts as unset, as XDG demands: a relative path would name another
    /// place for every folder that the program is started in.
    static UserPaths from(Environment const &environment);

    /// The paths of the user who runs this process.
    static UserPaths ofThisUser();
};

} // namespace tw
