#pragma once

#include "Tarnwick/Panes/PaneNotice.h"

#include <QPalette>

namespace tw {

/// What a pane's strip is painted in. Derived from the palette in use, and readable on it.
struct NoticeColors {
    QColor ground;
    QColor text;
    QColor sign; ///< the icon, and the line at the lower edge

    static NoticeColors of(PaneNotice::Kind kind, QPalette const &palette);
};

} // namespace tw
