#include "Tarnwick/Table/RowOrder.h"

#include "TWCore/Model/MergeSort.h"
#include "TWCore/Model/NameSorter.h"
#include "Tarnwick/Table/ExtensionOrder.h"

#include <algorithm>

namespace tw {

namespace {

/// A row with the number that it is sorted by.
struct NumberedRow {
    std::uint64_t number = 0;
    std::uint32_t row = 0;
};

/// An unsigned number that orders as the signed one does.
std::uint64_t asOrderedNumber(std::int64_t value)
{
    return static_cast<std::uint64_t>(value) ^ (std::uint64_t{1} << 63);
}

std::vector<NumberedRow> numberedRows(std::span<std::uint32_t const> rows, DirectorySnapshot const &snapshot,
                                      SortKey key)
{
    auto const extensions = key == SortKey::ext ? extensionPlaces(rows, snapshot) : std::vector<std::uint32_t>();
    std::vector<NumberedRow> numbered(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        auto const &entry = snapshot.entries()[rows[i]];
        auto const number =
            key == SortKey::ext ? extensions[i] : asOrderedNumber(key == SortKey::size ? entry.size : entry.mtime);
        numbered[i] = {.number = number, .row = rows[i]};
    }
    return numbered;
}

/// By number in the given direction, and rows of one number by ascending name.
void sortByNumber(std::span<std::uint32_t> rows, std::vector<NumberedRow> numbered, SortDirection direction,
                  NameSorter &names)
{
    if (direction == SortDirection::descending) {
        for (auto &row : numbered)
            row.number = ~row.number;
    }
    mergeSort(numbered, [](NumberedRow const &a, NumberedRow const &b) { return a.number < b.number; });
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i] = numbered[i].row;

    for (std::size_t begin = 0; begin < rows.size();) {
        auto end = begin + 1;
        while (end < rows.size() && numbered[end].number == numbered[begin].number)
            ++end;
        if (end - begin > 1)
            names.sort(rows.subspan(begin, end - begin), SortDirection::ascending);
        begin = end;
    }
}

/// Which rows these are, as far as the order of sizes cares.
enum class Group { folders, files, both };

void sortGroup(std::span<std::uint32_t> rows, Group group, DirectorySnapshot const &snapshot, RowOrder order,
               NameSorter &names)
{
    auto const direction = order.ascending ? SortDirection::ascending : SortDirection::descending;
    if (order.key == SortKey::name)
        names.sort(rows, direction);
    else if (order.key == SortKey::size && group == Group::folders)
        names.sort(rows, SortDirection::ascending); // the size of a folder means nothing
    else
        sortByNumber(rows, numberedRows(rows, snapshot, order.key), direction, names);
}

} // namespace

void sortRows(std::vector<std::uint32_t> &rows, DirectorySnapshot const &snapshot, Collation const &collation,
              RowOrder order)
{
    NameSorter names(snapshot, collation);
    if (order.placement == FolderPlacement::mixed)
        return sortGroup(rows, Group::both, snapshot, order, names);

    auto const foldersFirst = order.placement == FolderPlacement::top;
    auto const isAbove = [&](std::uint32_t row) { return snapshot.entries()[row].isDirectory() == foldersFirst; };
    std::vector<std::uint32_t> grouped(rows.size());
    auto const above = static_cast<std::size_t>(std::ranges::count_if(rows, isAbove));
    std::ranges::partition_copy(rows, grouped.begin(), grouped.begin() + static_cast<std::ptrdiff_t>(above), isAbove);
    rows = std::move(grouped);

    auto const upper = std::span(rows).first(above);
    auto const lower = std::span(rows).subspan(above);
    sortGroup(upper, foldersFirst ? Group::folders : Group::files, snapshot, order, names);
    sortGroup(lower, foldersFirst ? Group::files : Group::folders, snapshot, order, names);
}

} // namespace tw
