#pragma once

#include <QPalette>

namespace tw {

/// What the rows of a pane are painted in. Derived from the palette in use, and readable on it.
struct PaneColors {
    QColor name;
    QColor folder;   ///< the name of a directory
    QColor detail;   ///< what stands beside the name
    QColor marked;   ///< all texts of a marked row
    QColor cursor;   ///< fills the cursor's row in the active pane, and outlines it in the other
    QColor onCursor; ///< texts on the filled row
    QColor markedOnCursor;

    static PaneColors of(QPalette const &palette);
};

} // namespace tw
