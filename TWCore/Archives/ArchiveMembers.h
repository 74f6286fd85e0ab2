#pragma once

#include "TWCore/Archives/ArchiveEntry.h"

#include <vector>

namespace tw {

/// What an archive holds, as its tool lists it.
struct ArchiveMembers {
    std::vector<ArchiveEntry> entries;
    /// The archive writes "./" before its names, as one that was made of a whole folder does. A tool finds a member
    /// only under the name that the archive writes.
    bool beginWithDot = false;
};

} // namespace tw
