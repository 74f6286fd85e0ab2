#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

/// How the characters of a line lie in a grid of cells that are equally wide.
namespace tw::RowBreaks {

constexpr int tabWidth = 8;

/// How many cells a character takes in `column`: a tab up to the next stop, one of Chinese, Japanese or Korean two, a
/// mark on the character before it none.
int cellsOf(char32_t character, int column);

/// Where the rows of a line begin, the first at 0. `columns` is the width of a row; 0: the line is one row. A mark
/// stays in the row of its character.
std::vector<std::size_t> of(std::u32string_view line, int columns);

/// The column at which each character of a row begins, and behind them the width of the row.
std::vector<int> columnsOf(std::u32string_view row);

/// The character of a row that lies nearest to a place between two columns, or its length.
std::size_t characterAt(std::u32string_view row, double column);

} // namespace tw::RowBreaks
