#include "Tarnwick/Settings/FolderPlacement.h"

namespace tw {

namespace {

constexpr char const *key = "tw.folderPlacement";

} // namespace

FolderPlacement folderPlacement(Defaults const &defaults)
{
    auto const text = defaults.text(key);
    if (text == "bottom")
        return FolderPlacement::bottom;
    if (text == "mixed")
        return FolderPlacement::mixed;
    return FolderPlacement::top;
}

void setFolderPlacement(Defaults &defaults, FolderPlacement placement)
{
    switch (placement) {
    case FolderPlacement::top:
        return defaults.setText(key, "top");
    case FolderPlacement::bottom:
        return defaults.setText(key, "bottom");
    case FolderPlacement::mixed:
        return defaults.setText(key, "mixed");
    }
}

} // namespace tw
