#pragma once

#include "Tarnwick/Settings/Defaults.h"

namespace tw {

/// Where folders stand among files.
enum class FolderPlacement {
    top,
    bottom,
    mixed, ///< no grouping
};

/// The setting "tw.folderPlacement", with the values "top", "bottom" and "mixed"; anything else reads as "top".
FolderPlacement folderPlacement(Defaults const &defaults);
void setFolderPlacement(Defaults &defaults, FolderPlacement placement);

} // namespace tw
