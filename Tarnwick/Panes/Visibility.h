#pragma once

namespace tw {

/// Whether anybody looks at a pane.
enum class Visibility {
    hidden,  ///< behind another tab, or in a window that is out of the way
    visible, ///< on screen, while the user works with another program
    lookedAt
};

} // namespace tw
