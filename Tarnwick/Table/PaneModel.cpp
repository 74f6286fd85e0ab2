#include "Tarnwick/Table/PaneModel.h"

#include "TWCore/Check.h"
#include "Tarnwick/Table/RowOrder.h"

#include <algorithm>
#include <limits>

#include <fnmatch.h>

namespace tw {

namespace {

/// The sum, held at the largest number: the sizes are what a host claims, and may be anything.
std::int64_t saturatingSum(std::int64_t a, std::int64_t b)
{
    std::int64_t sum = 0;
    if (!__builtin_add_overflow(a, b, &sum))
        return sum;
    return a < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

/// The listing that the visible rows point into: without one there are no such rows.
DirectorySnapshot const &shown(std::optional<DirectorySnapshot> const &listing)
{
    if (!listing)
        bug("a pane has rows without a listing");
    return *listing;
}

std::vector<std::string> patternsOf(std::string_view mask)
{
    constexpr std::string_view separators = " ;";
    std::vector<std::string> patterns;
    while (!mask.empty()) {
        auto const end = std::min(mask.find_first_of(separators), mask.size());
        if (end > 0)
            patterns.emplace_back(mask.substr(0, end));
        mask.remove_prefix(std::min(end + 1, mask.size()));
    }
    return patterns;
}

} // namespace

std::string_view sortKeyText(SortKey key)
{
    switch (key) {
    case SortKey::name:
        return "name";
    case SortKey::ext:
        return "ext";
    case SortKey::size:
        return "size";
    case SortKey::date:
        return "date";
    }
    return {};
}

std::optional<SortKey> sortKeyFromText(std::string_view text)
{
    for (auto const key : {SortKey::name, SortKey::ext, SortKey::size, SortKey::date}) {
        if (text == sortKeyText(key))
            return key;
    }
    return std::nullopt;
}

PaneModel::PaneModel(Defaults const &defaults) : settings(defaults) {}

void PaneModel::setSnapshot(DirectorySnapshot snapshot)
{
    collation = Collation(snapshot);
    listing = std::move(snapshot);
    rebuild();
}

void PaneModel::rebuild()
{
    visible.clear();
    if (!listing)
        return;
    auto const entries = listing->entries();
    visible.reserve(entries.size());
    for (std::uint32_t index = 0; index < entries.size(); ++index) {
        if (!showHidden) {
            auto const bytes = listing->nameBytes(entries[index]);
            check(!bytes.empty(), "a listing holds an entry without a name");
            if (bytes.front() == '.')
                continue;
        }
        visible.push_back(index);
    }
    sortRows(visible, *listing, collation,
             {.key = sortKey, .ascending = ascending, .placement = folderPlacement(settings)});
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
    return index ? &shown(listing).entries()[*index] : nullptr;
}

std::string_view PaneModel::name(int row) const
{
    auto const *const found = entry(row);
    return found != nullptr ? shown(listing).nameBytes(*found) : std::string_view();
}

std::optional<int> PaneModel::rowForName(std::string_view name) const
{
    auto const place = std::ranges::find_if(visible, [&](std::uint32_t index) {
        return shown(listing).nameBytes(shown(listing).entries()[index]) == name;
    });
    if (place == visible.end())
        return std::nullopt;
    return static_cast<int>(place - visible.begin()) + (hasParentRow() ? 1 : 0);
}

bool PaneModel::isMarked(int row) const
{
    return entryIndex(row) && marked.contains(std::string(name(row)));
}

void PaneModel::toggleMark(int row)
{
    if (!entryIndex(row))
        return;
    std::string const toggled(name(row));
    if (marked.erase(toggled) == 0)
        marked.insert(toggled);
}

void PaneModel::markRange(int from, int to, Marks change)
{
    auto const rows = rowCount();
    if (rows == 0)
        return;
    auto const [first, last] = std::minmax({std::clamp(from, 0, rows - 1), std::clamp(to, 0, rows - 1)});
    for (int row = first; row <= last; ++row) {
        if (!entryIndex(row))
            continue;
        if (change == Marks::insert)
            marked.emplace(name(row));
        else
            marked.erase(std::string(name(row)));
    }
}

void PaneModel::markAll(Marks change)
{
    marked.clear();
    if (change == Marks::remove)
        return;
    for (auto &name : visibleNames())
        marked.insert(std::move(name));
}

void PaneModel::invertMarks()
{
    std::set<std::string> inverted;
    for (auto &name : visibleNames()) {
        if (!marked.contains(name))
            inverted.insert(std::move(name));
    }
    marked = std::move(inverted);
}

int PaneModel::markMatching(std::string_view mask, Marks change)
{
    auto const patterns = patternsOf(mask);
    int count = 0;
    for (auto &name : visibleNames()) {
        auto const matches = [&](std::string const &pattern) { return fnmatch(pattern.c_str(), name.c_str(), 0) == 0; };
        if (std::ranges::none_of(patterns, matches))
            continue;
        ++count;
        if (change == Marks::insert)
            marked.insert(std::move(name));
        else
            marked.erase(name);
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

std::vector<std::string> PaneModel::operands(std::optional<int> cursorRow) const
{
    if (!marked.empty())
        return {marked.begin(), marked.end()};
    if (cursorRow && entryIndex(*cursorRow))
        return {std::string(name(*cursorRow))};
    return {};
}

PaneModel::Totals PaneModel::totals() const
{
    Totals sum;
    for (auto const index : visible) {
        auto const &entry = shown(listing).entries()[index];
        if (entry.isDirectory()) {
            ++sum.dirs;
            continue;
        }
        ++sum.files;
        sum.bytes = saturatingSum(sum.bytes, entry.size);
    }
    return sum;
}

PaneModel::MarkedSummary PaneModel::markedSummary() const
{
    MarkedSummary summary;
    if (marked.empty())
        return summary;
    std::string name; // one for all, so that a large folder costs no allocation a row
    for (auto const index : visible) {
        auto const &entry = shown(listing).entries()[index];
        name = shown(listing).nameBytes(entry);
        if (!marked.contains(name))
            continue;
        ++summary.count;
        if (!entry.isDirectory())
            summary.bytes = saturatingSum(summary.bytes, entry.size);
    }
    return summary;
}

std::vector<std::string> PaneModel::visibleNames() const
{
    std::vector<std::string> names;
    names.reserve(visible.size());
    for (auto const index : visible)
        names.emplace_back(shown(listing).nameBytes(shown(listing).entries()[index]));
    return names;
}

} // namespace tw
