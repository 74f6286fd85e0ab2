#pragma once

#include "TWCore/Model/Collation.h"
#include "TWCore/Model/DirectorySnapshot.h"
#include "Tarnwick/Settings/FolderPlacement.h"
#include "Tarnwick/Table/ViewOptions.h"

#include <cstdint>
#include <vector>

namespace tw {

/// In which order the rows of a pane stand.
struct RowOrder {
    SortKey key = SortKey::name;
    bool ascending = true;
    FolderPlacement placement = FolderPlacement::top;
};

/// Brings `rows`, which are indexes into the snapshot's entries, into order; equal ones stay as they are.
///
/// Folders are grouped as `placement` says, whatever the direction. Sizes, dates and extensions that are equal are in
/// ascending order of names, whatever the direction, and so are folders among themselves in an order by size, unless
/// they are mixed with the files. Extensions are compared by the user's locale without regard to case; two that differ
/// in case only are not ordered when ascending, and each before the other when descending.
///
/// Names are compared where they are stored: beside `rows` there is one flat record a row, and no text for any key but
/// the extensions.
void sortRows(std::vector<std::uint32_t> &rows, DirectorySnapshot const &snapshot, Collation const &collation,
              RowOrder order);

} // namespace tw
