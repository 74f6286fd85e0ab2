#pragma once

#include "TWCore/Model/DirectorySnapshot.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tw {

/// For each of the rows, which are indexes into the snapshot's entries, the place of its extension among all extensions
/// that occur: equal for equal texts, and ordered by the user's locale without regard to case. Extensions that differ
/// in nothing but case have places next to each other, in the order in which they occur.
///
/// The locale is asked once for each different extension, not for each comparison of two rows.
std::vector<std::uint32_t> extensionPlaces(std::span<std::uint32_t const> rows, DirectorySnapshot const &snapshot);

} // namespace tw
