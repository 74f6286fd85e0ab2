#pragma once

#include <string>
#include <variant>
#include <vector>

namespace tw {

/// What gives that which waits in a staging folder its place, and removes the folder.
///
/// If root has unpacked it, devices and the right of files to run as their owner go before; the tools of other users
/// leave out both by themselves.
namespace ArchivePlacing {

/// Moves what was unpacked to `target`, which must not be there yet: the staging folder itself, or the one folder in it
/// if that has the name `stem`.
struct All {
    std::string staging;
    std::string target;
    std::string stem;
};

/// Moves members, by their paths below the staging folder, into the folder `target` under their last names. A file
/// takes the place of a file, and a folder is merged with a folder.
struct Members {
    std::string staging;
    std::string target;
    std::vector<std::string> members;
};

/// Gives a file in the staging folder its place, where it may replace another file but no folder.
struct File {
    std::string file;
    std::string target;
};

using Any = std::variant<All, Members, File>;

} // namespace ArchivePlacing

} // namespace tw
