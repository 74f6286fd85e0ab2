#pragma once

#include <QFont>

namespace tw {

/// The fonts of a pane's rows.
struct PaneFonts {
    QFont text;   ///< names
    QFont digits; ///< sizes and dates, which line up because its digits are equally wide
    QFont fixed;  ///< attributes

    /// The desktop's fonts, in a size of `size`/96 inch.
    static PaneFonts ofSize(double size);

    /// The height of a row: the tallest of the fonts with some air, and never less than an icon needs.
    int rowHeight() const;

    /// The edge of an icon beside the text.
    int iconSize() const;
};

} // namespace tw
