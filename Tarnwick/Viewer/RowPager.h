#pragma once

#include "Tarnwick/Viewer/ViewedLines.h"
#include "Tarnwick/Viewer/ViewerPlace.h"

#include <vector>

namespace tw {

/// The rows of the lines in a window, from any place up and down. What is asked for costs by the rows that are asked
/// for, and never by the size of the window.
///
/// Lifetime: the window and the lines outlive it.
class RowPager {
public:
    RowPager(FileWindow const &bytes, ViewedLines const &linesOfIt) : window(bytes), lines(linesOfIt) {}

    int columns = 0;       ///< of a row
    bool wraps = true;     ///< false: a line is one row, however long
    int widestColumn = -1; ///< without wrapping, rows are cut here

    std::vector<ViewerRow> rowsFrom(ViewerPlace place, int count) const;

    /// At the last row at the latest.
    ViewerPlace forward(ViewerPlace place, int rows) const;

    /// At the first row of the window at the latest.
    ViewerPlace back(ViewerPlace place, int rows) const;

    /// The first row of a page that ends with the last row of the window.
    ViewerPlace lastPage(int rows) const;

    /// The row with the character at `offset`.
    ViewerPlace rowWith(std::int64_t offset) const;

    /// The row with a character of a line.
    ViewerPlace rowOf(ViewerPlace place) const;

    /// The row in the window that is nearest to a place found before the window or the lines changed.
    ViewerPlace normalised(ViewerPlace place) const;

    /// The same character as before the window grew. One that is not in the window stays as it is.
    ViewerPlace foundAgain(ViewerPlace place) const;

    /// The text between two places.
    std::u32string textBetween(ViewerPlace from, ViewerPlace to) const;

private:
    int rowColumns() const { return wraps && lines.mode == ViewerMode::text ? columns : 0; }

    bool hasLine(std::int64_t start) const { return start >= window.begin() && start < window.end(); }

    std::vector<std::size_t> breaksOf(std::int64_t line) const;

    FileWindow const &window;
    ViewedLines const &lines;
};

} // namespace tw
