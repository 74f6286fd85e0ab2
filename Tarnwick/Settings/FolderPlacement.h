#pragma once

namespace tw {

/// Where folders stand among files.
enum class FolderPlacement {
    top,
    bottom,
    mixed, ///< no grouping
};

} // namespace tw
