#pragma once

namespace tw {

/// Where in one side of the window a drag is.
struct DropSpot {
    enum class Kind {
        pane, ///< beside the rows: the folder on show
        row,
        tab,
        pathPart, ///< the folder above that so many components of the path lead to
        nowhere,  ///< nothing can be dropped here
    };

    Kind kind = Kind::nowhere;
    int index = 0;  ///< of the row or the tab, or the components
    int scroll = 0; ///< how fast the rows are to scroll, see EdgeScroll

    friend bool operator==(DropSpot const &, DropSpot const &) = default;
};

} // namespace tw
