#pragma once

#include "TWCore/Archives/ArchiveEntry.h"
#include "TWCore/Provider/FileSystemProvider.h"

#include <chrono>
#include <cstddef>
#include <vector>

namespace tw {

/// The folders of an archive, made from the list of its members. The paths begin at "/", which is always there.
struct ArchiveTree {
    /// A member with a longer path is left out: no system opens a file by it, and each of its parts would be a folder.
    static constexpr std::size_t longestPath = 4096;

    /// The paths of all folders together, in bytes. A few members with thousands of folders each are small in a listing
    /// and could fill the memory here; an archive that people have is far below.
    static constexpr std::size_t mostPathBytes = std::size_t{256} << 20U;

    Listings folders;
    std::size_t leftOut = 0; ///< members whose path leads out of its folder, is too long, or is one folder too many

    /// Folders that no member stands for are made, with the date 0. Of two members of one name the later one counts,
    /// as when they are unpacked. Whatever is no folder is a file. The rows are in the order of their names' bytes.
    static ArchiveTree build(std::vector<ArchiveEntry> const &entries, std::chrono::system_clock::time_point now,
                             std::size_t pathLimit = ArchiveTree::mostPathBytes);
};

} // namespace tw
