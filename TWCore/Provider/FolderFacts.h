#pragma once

#include "TWCore/Model/Entry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tw {

/// What a file system knows a file by, whatever path leads to it.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    friend bool operator==(FileIdentity const &, FileIdentity const &) = default;
};

/// What a place itself says about a folder, at the moment of the question. Nothing of it comes from a cache.
struct FolderFacts {
    enum class State { present, missing, notAFolder };

    /// One of the names that were asked about, and what has it. A link is described, and not its target.
    struct Occupant {
        std::string name; ///< as it was asked for; the folder may spell it in another way
        EntryKind kind = EntryKind::unknown;
        std::int64_t size = 0;  ///< bytes
        std::int64_t mtime = 0; ///< whole seconds since 1970-01-01 UTC
        std::optional<FileIdentity> identity = {};
        bool isMountPoint = false; ///< another file system begins there
    };

    State state = State::missing;
    std::string realPath = {};          ///< without links; empty if there is no folder
    std::vector<FileIdentity> way = {}; ///< the folder and all above it, where the place knows them
    std::vector<Occupant> taken = {};   ///< in the order of the question; a free name is left out
    bool takesCasesForOne = false;      ///< "A" and "a" are one name in this folder
};

} // namespace tw
