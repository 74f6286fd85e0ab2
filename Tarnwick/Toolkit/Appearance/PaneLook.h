#pragma once

#include "Tarnwick/Toolkit/Appearance/PaneColors.h"
#include "Tarnwick/Toolkit/Appearance/PaneFonts.h"

#include <optional>

namespace tw {

/// What the cells of one pane are painted with, beside what the model tells of them.
struct PaneLook {
    PaneFonts fonts;
    PaneColors colors;
    std::optional<int> cursorRow;
    bool hasWholeNames = false; ///< there is no column of extensions, so that the names are shown with theirs
    bool isActive = false;      ///< the cursor of the active pane is filled, the other one's an outline
};

} // namespace tw
