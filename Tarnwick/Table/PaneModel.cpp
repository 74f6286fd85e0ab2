#include "Tarnwick/Table/PaneModel.h"

#include "TWCore/Check.h"
#include "Tarnwick/Table/NameMask.h"

#include <algorithm>
#include <limits>
#include <unordered_set>
#include <utility>

namespace tw {

namespace {

/// Held at the largest and the smallest number.
std::int64_t saturated(__int128 sum)
{
    using Limits = std::numeric_limits<std::int64_t>;
    return static_cast<std::int64_t>(
        std::clamp(sum, static_cast<__int128>(Limits::min()), static_cast<__int128>(Limits::max())));
}

} // namespace

void PaneModel::Sums::count(Entry const &entry, int sign)
{
    (entry.isDirectory() ? dirs : files) += sign;
    if (!entry.isDirectory())
        bytes += static_cast<WideSum>(entry.size) * sign;
}

void PaneModel::setSnapshot(DirectorySnapshot snapshot)
{
    setListing(OrderedListing::of(std::move(snapshot), options, placement));
}

void PaneModel::setListing(OrderedListing next)
{
    marks.carryOver(listing.value_or(DirectorySnapshot()), next.snapshot);
    collation = std::move(next.collation);
    listing = std::move(next.snapshot);
    endFinding();
    if (next.options == options && next.placement == placement)
        show(std::move(next.rows));
    else
        rebuild();
}

bool PaneModel::isCut(int row) const
{
    return cut && listing && cut->directory == listing->path() && entry(row) &&
           cut->names.contains(std::string(name(row)));
}

void PaneModel::setViewOptions(ViewOptions const &wanted)
{
    if (std::exchange(options, wanted) != wanted)
        rebuild();
}

void PaneModel::setFolderPlacement(FolderPlacement wanted)
{
    if (std::exchange(placement, wanted) != wanted)
        rebuild();
}

void PaneModel::rebuild()
{
    show(listing ? orderedRows(*listing, collation, options, placement) : std::vector<std::uint32_t>());
}

void PaneModel::show(std::vector<std::uint32_t> rows)
{
    visible = std::move(rows);
    places.clear();
    shown = {};
    shownMarked = {};
    for (auto const index : visible) {
        shown.count(entryAt(index), 1);
        if (marks.contains(index))
            shownMarked.count(entryAt(index), 1);
    }
}

/// Visible rows point into the listing: without one there are no such rows.
Entry const &PaneModel::entryAt(std::uint32_t index) const
{
    if (!listing)
        bug("a pane has rows without a listing");
    return listing->entries()[index];
}

std::string_view PaneModel::nameAt(std::uint32_t index) const
{
    auto const &entry = entryAt(index);
    return listing->nameBytes(entry);
}

bool PaneModel::isOnShow(std::string_view name) const
{
    return options.showHidden || name.front() != '.';
}

void PaneModel::mark(std::uint32_t index, bool marked)
{
    if (marks.set(index, marked))
        shownMarked.count(entryAt(index), marked ? 1 : -1);
}

bool PaneModel::hasParentRow() const
{
    return (listing && listing->path() != "/") || alwaysShowParentRow;
}

int PaneModel::rowCount() const
{
    return static_cast<int>(visible.size()) + (hasParentRow() ? 1 : 0);
}

std::optional<std::uint32_t> PaneModel::entryIndex(int row) const
{
    auto const place = hasParentRow() ? std::int64_t{row} - 1 : std::int64_t{row};
    if (place < 0 || place >= std::ssize(visible))
        return std::nullopt;
    return visible[static_cast<std::size_t>(place)];
}

Entry const *PaneModel::entry(int row) const
{
    auto const index = entryIndex(row);
    return index ? &entryAt(*index) : nullptr;
}

std::string_view PaneModel::name(int row) const
{
    auto const index = entryIndex(row);
    return index ? nameAt(*index) : std::string_view();
}

std::optional<int> PaneModel::rowForName(std::string_view name) const
{
    auto const place = std::ranges::find_if(visible, [&](std::uint32_t index) { return nameAt(index) == name; });
    if (place == visible.end())
        return std::nullopt;
    return static_cast<int>(place - visible.begin()) + (hasParentRow() ? 1 : 0);
}

std::optional<int> PaneModel::findRow(std::string_view typed, int from)
{
    if (!listing)
        return std::nullopt;
    if (!foldedNames)
        foldedNames.emplace(*listing);
    if (places.empty())
        places = FoldedNames::placesOf(visible, listing->count());
    auto const firstRow = hasParentRow() ? 1 : 0;
    auto const place = foldedNames->find(typed, static_cast<std::size_t>(std::max(from - firstRow, 0)), places);
    return place ? std::optional(static_cast<int>(*place) + firstRow) : std::nullopt;
}

void PaneModel::takeFoldedNames(DirectorySnapshot const &of, FoldedNames names)
{
    // Two listings that live at the same time are one if they share their rows.
    if (listing && listing->entries().data() == of.entries().data())
        foldedNames = std::move(names);
}

void PaneModel::endFinding()
{
    foldedNames.reset();
    places = {};
}

bool PaneModel::isMarked(int row) const
{
    auto const index = entryIndex(row);
    return index && marks.contains(*index);
}

void PaneModel::toggleMark(int row)
{
    if (auto const index = entryIndex(row))
        mark(*index, !marks.contains(*index));
}

void PaneModel::markRange(int from, int to, Marks change)
{
    auto const rows = rowCount();
    if (rows == 0)
        return;
    auto const [first, last] = std::minmax({std::clamp(from, 0, rows - 1), std::clamp(to, 0, rows - 1)});
    for (int row = first; row <= last; ++row) {
        if (auto const index = entryIndex(row))
            mark(*index, change == Marks::insert);
    }
}

void PaneModel::markAll(Marks change)
{
    marks.clear();
    shownMarked = {};
    if (change == Marks::insert)
        invertMarks();
}

void PaneModel::invertMarks()
{
    unmarkWhatIsNotOnShow();
    for (auto const index : visible)
        mark(index, !marks.contains(index));
}

void PaneModel::unmarkWhatIsNotOnShow()
{
    marks.clearAbsent();
    if (!listing || visible.size() == listing->count())
        return;
    std::vector<bool> isOnShow(listing->count());
    for (auto const index : visible)
        isOnShow[index] = true;
    for (std::uint32_t index = 0; index < isOnShow.size(); ++index) {
        if (!isOnShow[index])
            marks.set(index, false);
    }
}

void PaneModel::unmark(std::span<std::string const> names)
{
    std::unordered_set<std::string_view> const wanted(names.begin(), names.end());
    for (auto const index : visible) {
        if (marks.contains(index) && wanted.contains(nameAt(index)))
            mark(index, false);
    }
}

int PaneModel::markMatching(std::string_view mask, Marks change)
{
    if (!listing)
        return 0;
    NameMask const pattern(mask);
    int count = 0;
    // In the order of the listing, in which the names lie in memory.
    for (std::uint32_t index = 0; index < listing->count(); ++index) {
        auto const name = nameAt(index);
        if (!isOnShow(name) || !pattern.matches(name))
            continue;
        ++count;
        mark(index, change == Marks::insert);
    }
    return count;
}

std::optional<std::string> PaneModel::parentPath() const
{
    if (!listing || listing->path() == "/")
        return std::nullopt;
    auto const slash = listing->path().rfind('/');
    if (slash == 0 || slash == std::string::npos)
        return "/";
    return listing->path().substr(0, slash);
}

std::vector<std::string> PaneModel::markedNames() const
{
    std::vector<std::string> names;
    if (marks.isEmpty())
        return names;
    for (auto const index : visible) {
        if (marks.contains(index))
            names.emplace_back(nameAt(index));
    }
    return names;
}

std::vector<std::string> PaneModel::operands(std::optional<int> cursorRow) const
{
    auto names = markedNames();
    if (names.empty() && cursorRow && entryIndex(*cursorRow))
        names.emplace_back(name(*cursorRow));
    return names;
}

PaneModel::Totals PaneModel::totals() const
{
    return {.files = shown.files, .dirs = shown.dirs, .bytes = saturated(shown.bytes)};
}

PaneModel::MarkedSummary PaneModel::markedSummary() const
{
    return {.count = shownMarked.files + shownMarked.dirs, .bytes = saturated(shownMarked.bytes)};
}

std::vector<std::string> PaneModel::visibleNames() const
{
    std::vector<std::string> names;
    names.reserve(visible.size());
    for (auto const index : visible)
        names.emplace_back(nameAt(index));
    return names;
}

} // namespace tw
