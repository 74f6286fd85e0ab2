#include "Tarnwick/Panes/PaneCursor.h"

#include <algorithm>

namespace tw {

std::optional<int> PaneCursor::target(Key key, int pageRows) const
{
    if (!current)
        return std::nullopt;
    // A page less one row, so that the eye finds the row that it was on.
    auto const pageStride = std::max(pageRows - 1, 1);
    auto const wanted = [&]() -> std::optional<int> {
        switch (key) {
        case Key::home:
            return 0;
        case Key::end:
            return lastRow();
        case Key::pageUp:
            return *current - pageStride;
        case Key::pageDown:
            return *current + pageStride;
        case Key::up:
            return *current - 1;
        case Key::down:
            return *current + 1;
        default:
            return std::nullopt;
        }
    }();
    return wanted ? std::optional(std::clamp(*wanted, 0, lastRow())) : std::nullopt;
}

void PaneCursor::moveTo(int row)
{
    if (!isInside(row))
        return;
    current = row;
    anchor = row;
    rangeEnd.reset();
}

void PaneCursor::restore(std::string_view name)
{
    rangeEnd.reset();
    current.reset();
    if (rows.rowCount() > 0)
        moveTo(name.empty() ? 0 : rows.rowForName(name).value_or(0));
}

void PaneCursor::markUpTo(int row, OtherMarks others)
{
    using Marks = PaneModel::Marks;
    if (!isInside(row))
        return;
    anchor = std::clamp(anchor, 0, lastRow());
    auto newFrom = anchor;
    if (others == OtherMarks::dropped && rangeEnd) {
        // Of the rows between the old end and the new one those stay marked that the new range reaches.
        rows.markRange(*rangeEnd, row, Marks::remove);
        newFrom = std::clamp(*rangeEnd, std::min(anchor, row), std::max(anchor, row));
    } else if (others == OtherMarks::dropped) {
        rows.markAll(Marks::remove);
    }
    rows.markRange(newFrom, row, Marks::insert);
    current = row;
    rangeEnd = others == OtherMarks::dropped ? std::optional(row) : std::nullopt;
}

void PaneCursor::toggleMark(int row)
{
    if (!isInside(row))
        return;
    rows.toggleMark(row);
    moveTo(row);
}

void PaneCursor::invertMarks()
{
    rows.invertMarks();
    rangeEnd.reset();
}

void PaneCursor::markAll()
{
    rows.markAll(PaneModel::Marks::insert);
    rangeEnd.reset();
}

int PaneCursor::markMatching(std::string_view mask, PaneModel::Marks change)
{
    rangeEnd.reset();
    return rows.markMatching(mask, change);
}

void PaneCursor::unmarkAll()
{
    rows.markAll(PaneModel::Marks::remove);
    anchor = current.value_or(0);
    rangeEnd.reset();
}

void PaneCursor::unmark(std::span<std::string const> names)
{
    rows.unmark(names);
    rangeEnd.reset();
}

} // namespace tw
