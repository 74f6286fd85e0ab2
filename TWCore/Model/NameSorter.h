#pragma once

#include "TWCore/Model/Collation.h"
#include "TWCore/Model/DirectorySnapshot.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tw {

enum class SortDirection { ascending, descending };

/// Sorts rows of one listing by name, as a stable sort by `nameIsOrderedBefore` does, but several times as fast.
///
/// Most comparisons read eight bytes of the name, stored beside the number of the row; the names are read again only
/// for rows with the same beginning. Where the order of names is not transitive, the order of the rows is unspecified.
///
/// Lifetime: listing and collation outlive it. Reuse one for several sorts: it keeps its memory.
class NameSorter {
public:
    NameSorter(DirectorySnapshot const &snapshot, Collation const &collation);

    /// `rows` are indexes into the listing's entries.
    void sort(std::span<std::uint32_t> rows, SortDirection direction);

    /// A row, and the rest of its name after the prefix that is equal in all rows of the range.
    struct NameRow {
        std::uint64_t beginning = 0; ///< the first eight bytes in lower case, the first byte highest
        char const *name = nullptr;
        std::uint32_t length = 0;
        std::uint32_t row = 0;

        std::string_view bytes() const noexcept { return {name, length}; }
    };

private:
    DirectorySnapshot const &listing;
    Collation const &keys;
    std::vector<NameRow> named;
    std::vector<NameRow> scratch;
};

} // namespace tw
