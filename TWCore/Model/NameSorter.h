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
/// Most comparisons are of eight bytes of a name that lie beside the row's number; the names themselves are looked at
/// again only for rows that begin alike. Where the order of names is not transitive, no order of the rows satisfies it,
/// and any may come out.
///
/// Lifetime: listing and collation outlive it. To be kept for several sorts: it keeps its memory from one to the next.
class NameSorter {
public:
    NameSorter(DirectorySnapshot const &snapshot, Collation const &collation);

    /// `rows` are indexes into the listing's entries.
    void sort(std::span<std::uint32_t> rows, SortDirection direction);

    /// A row, with what is left of its name behind the bytes that are known to decide nothing.
    struct NameRow {
        std::uint64_t beginning = 0; ///< its first eight bytes in lower case, the first one highest
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
