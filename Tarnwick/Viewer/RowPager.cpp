#include "Tarnwick/Viewer/RowPager.h"

#include "Tarnwick/Viewer/RowBreaks.h"

#include <algorithm>

namespace tw {

namespace {

/// The part of a row before a column.
std::u32string cutAt(std::u32string row, int widest)
{
    int column = 0;
    for (std::size_t index = 0; index < row.size(); ++index) {
        if (column > widest) {
            row.resize(index);
            break;
        }
        column += RowBreaks::cellsOf(row[index], column);
    }
    return row;
}

/// The number of the row in which a character is.
std::size_t rowNumber(std::vector<std::size_t> const &breaks, std::size_t character)
{
    return static_cast<std::size_t>(std::ranges::upper_bound(breaks, character) - breaks.begin()) - 1;
}

} // namespace

std::vector<std::size_t> RowPager::breaksOf(std::int64_t line) const
{
    return rowColumns() == 0 ? std::vector<std::size_t>{0} : RowBreaks::of(lines.text(line), rowColumns());
}

std::vector<ViewerRow> RowPager::rowsFrom(ViewerPlace place, int count) const
{
    std::vector<ViewerRow> rows;
    auto const wanted = static_cast<std::size_t>(std::max(count, 0));
    for (auto line = place.line; hasLine(line) && rows.size() < wanted; line = lines.endOf(line)) {
        auto const text = lines.text(line);
        auto const breaks = rowColumns() == 0 ? std::vector<std::size_t>{0} : RowBreaks::of(text, rowColumns());
        auto const first = line == place.line ? rowNumber(breaks, place.character) : 0;
        for (auto row = first; row < breaks.size() && rows.size() < wanted; ++row) {
            auto const end = row + 1 < breaks.size() ? breaks[row + 1] : text.size();
            auto part = text.substr(breaks[row], end - breaks[row]);
            if (rowColumns() == 0 && widestColumn >= 0)
                part = cutAt(std::move(part), widestColumn);
            rows.push_back({.place = {line, breaks[row]}, .text = std::move(part)});
        }
    }
    return rows;
}

ViewerPlace RowPager::forward(ViewerPlace place, int rows) const
{
    auto last = place;
    for (auto line = place.line; hasLine(line); line = lines.endOf(line)) {
        auto const breaks = breaksOf(line);
        auto const first = line == place.line ? rowNumber(breaks, place.character) : 0;
        auto const left = breaks.size() - first;
        if (static_cast<std::size_t>(rows) < left)
            return {line, breaks[first + static_cast<std::size_t>(rows)]};
        rows -= static_cast<int>(left);
        last = {line, breaks.back()};
    }
    return last;
}

ViewerPlace RowPager::back(ViewerPlace place, int rows) const
{
    auto line = place.line;
    auto row = rowNumber(breaksOf(line), place.character);
    while (static_cast<std::size_t>(rows) > row) {
        if (line <= window.begin())
            return {window.begin(), 0};
        rows -= static_cast<int>(row) + 1;
        line = lines.startOf(line - 1);
        row = breaksOf(line).size() - 1;
    }
    return {line, breaksOf(line)[row - static_cast<std::size_t>(rows)]};
}

ViewerPlace RowPager::lastPage(int rows) const
{
    if (window.isEmpty())
        return {window.begin(), 0};
    auto const line = lines.startOf(window.end() - 1);
    return back({line, breaksOf(line).back()}, std::max(rows - 1, 0));
}

ViewerPlace RowPager::rowWith(std::int64_t offset) const
{
    auto const line = lines.startOf(offset);
    return rowOf({line, lines.charactersBefore(line, offset)});
}

ViewerPlace RowPager::rowOf(ViewerPlace place) const
{
    auto const breaks = breaksOf(place.line);
    return {place.line, breaks[rowNumber(breaks, place.character)]};
}

ViewerPlace RowPager::normalised(ViewerPlace place) const
{
    if (window.isEmpty())
        return {window.begin(), 0};
    place.line = std::clamp(place.line, window.begin(), window.end() - 1);
    return rowOf(foundAgain(place));
}

ViewerPlace RowPager::foundAgain(ViewerPlace place) const
{
    auto const line = hasLine(place.line) ? lines.startOf(place.line) : place.line;
    if (line == place.line)
        return place;
    return {line, lines.charactersBefore(line, place.line) + place.character};
}

std::u32string RowPager::textBetween(ViewerPlace from, ViewerPlace to) const
{
    std::u32string all;
    for (auto line = from.line; line <= to.line && hasLine(line); line = lines.endOf(line)) {
        auto text = lines.text(line);
        auto const begin = line == from.line ? std::min(from.character, text.size()) : 0;
        auto const end = line == to.line ? std::min(to.character, text.size()) : text.size();
        if (begin < end)
            all += text.substr(begin, end - begin);
        if (line < to.line && lines.endsWithLineEnd(line))
            all += U'\n';
    }
    return all;
}

} // namespace tw
