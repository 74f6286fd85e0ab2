#include "Tarnwick/Panes/NameSurviving.h"

#include <unordered_set>

namespace tw {

std::string nameSurviving(PaneModel const &rows, std::span<std::string const> removedNames)
{
    std::unordered_set<std::string_view> const removed(removedNames.begin(), removedNames.end());
    auto const goes = [&](int row) { return removed.contains(rows.name(row)); };
    auto row = rows.rowCount() - 1;
    while (rows.entry(row) && !goes(row))
        --row;
    if (!rows.entry(row))
        return {};
    if (rows.entry(row + 1))
        return std::string(rows.name(row + 1));
    while (rows.entry(row) && goes(row))
        --row;
    return std::string(rows.name(row));
}

} // namespace tw
