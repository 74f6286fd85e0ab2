#include "Tarnwick/Viewer/RowBreaks.h"

#include <unicode/uchar.h>

#include <algorithm>

namespace tw::RowBreaks {

int cellsOf(char32_t character, int column)
{
    constexpr char32_t firstMark = 0x300; // all characters before it are one cell wide, or controls
    if (character == '\t')
        return tabWidth - column % tabWidth;
    if (character < firstMark)
        return 1;
    auto const point = static_cast<UChar32>(character);
    auto const type = u_charType(point);
    if (type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK || type == U_FORMAT_CHAR)
        return 0;
    auto const width = u_getIntPropertyValue(point, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

std::vector<std::size_t> of(std::u32string_view line, int columns)
{
    std::vector<std::size_t> starts{0};
    int column = 0;
    for (std::size_t index = 0; index < line.size(); ++index) {
        auto cells = cellsOf(line[index], column);
        if (columns > 0 && cells > 0 && column + cells > columns && index > starts.back()) {
            starts.push_back(index);
            column = 0;
            cells = cellsOf(line[index], 0);
        }
        column += cells;
    }
    return starts;
}

std::vector<int> columnsOf(std::u32string_view row)
{
    std::vector<int> columns;
    columns.reserve(row.size() + 1);
    int column = 0;
    for (auto const character : row) {
        columns.push_back(column);
        column += cellsOf(character, column);
    }
    columns.push_back(column);
    return columns;
}

std::size_t characterAt(std::u32string_view row, double column)
{
    auto const columns = columnsOf(row);
    for (std::size_t index = 0; index < row.size(); ++index) {
        auto const middle = (columns[index] + columns[index + 1]) / 2.0;
        if (columns[index + 1] > columns[index] && column < middle)
            return index;
    }
    return row.size();
}

} // namespace tw::RowBreaks
