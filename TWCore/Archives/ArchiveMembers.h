#pragma once

#include "TWCore/Archives/ArchiveEntry.h"

#include <vector>

namespace tw {

/// What an archive holds, as its tool lists it.
struct ArchiveMembers {
    /// A member of a tar without content of its own, and the member that has the content. Both are paths as in
    /// ArchiveEntry.
    struct HardLink {
        std::string path;
        std::string target;

        friend bool operator==(HardLink const &, HardLink const &) = default;
    };

    std::vector<ArchiveEntry> entries;
    /// The archive writes "./" before its names, as one that was made of a whole folder does. A tool finds a member
    /// only under the name that the archive writes.
    bool beginWithDot = false;
    std::vector<HardLink> hardLinks = {};
};

} // namespace tw
