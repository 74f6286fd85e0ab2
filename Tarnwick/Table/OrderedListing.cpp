#include "Tarnwick/Table/OrderedListing.h"

#include "TWCore/Check.h"
#include "Tarnwick/Table/RowOrder.h"

namespace tw {

std::vector<std::uint32_t> orderedRows(DirectorySnapshot const &listing, Collation const &collation,
                                       ViewOptions const &options, FolderPlacement placement)
{
    auto const entries = listing.entries();
    std::vector<std::uint32_t> rows;
    rows.reserve(entries.size());
    for (std::uint32_t index = 0; index < entries.size(); ++index) {
        auto const name = listing.nameBytes(entries[index]);
        check(!name.empty(), "a listing holds an entry without a name");
        if (options.showHidden || name.front() != '.')
            rows.push_back(index);
    }
    sortRows(rows, listing, collation,
             {.key = options.sortKey, .ascending = options.ascending, .placement = placement});
    return rows;
}

OrderedListing OrderedListing::of(DirectorySnapshot listing, ViewOptions const &options, FolderPlacement placement)
{
    Collation collation(listing);
    auto rows = orderedRows(listing, collation, options, placement);
    return {.snapshot = std::move(listing),
            .collation = std::move(collation),
            .options = options,
            .placement = placement,
            .rows = std::move(rows)};
}

} // namespace tw
