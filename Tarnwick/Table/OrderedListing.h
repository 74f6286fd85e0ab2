#pragma once

#include "TWCore/Model/Collation.h"
#include "TWCore/Model/DirectorySnapshot.h"
#include "Tarnwick/Settings/FolderPlacement.h"
#include "Tarnwick/Table/ViewOptions.h"

#include <cstdint>
#include <vector>

namespace tw {

/// The indexes of the entries that are on show, in the order of their rows.
std::vector<std::uint32_t> orderedRows(DirectorySnapshot const &listing, Collation const &collation,
                                       ViewOptions const &options, FolderPlacement placement);

/// A listing with its rows in order. It can be made on any thread: for a large folder that takes longer than a person
/// should wait for a key.
struct OrderedListing {
    static OrderedListing of(DirectorySnapshot listing, ViewOptions const &options, FolderPlacement placement);

    DirectorySnapshot snapshot;
    Collation collation = Collation::trivial();
    ViewOptions options = {};
    FolderPlacement placement = FolderPlacement::top;
    std::vector<std::uint32_t> rows = {};
};

} // namespace tw
