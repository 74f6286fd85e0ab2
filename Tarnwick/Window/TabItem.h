#pragma once

#include "Tarnwick/Panes/PaneSpec.h"

#include <string>

namespace tw {

/// What the tab of a pane says. The texts are for reading, on one line, whatever bytes the path has.
struct TabItem {
    std::string title;   ///< the last part of the path, of a host behind its name
    std::string toolTip; ///< the whole place
    bool isRemote = false;

    static TabItem of(PaneSpec const &place);

    friend bool operator==(TabItem const &, TabItem const &) = default;
};

} // namespace tw
