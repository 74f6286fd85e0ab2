#pragma once

#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Panes/PaneSpec.h"
#include "Tarnwick/Table/PaneModel.h"

#include <functional>
#include <optional>
#include <string>

namespace tw {

/// What a pane reports to its owner. Any of them may be empty.
struct PaneCallbacks {
    std::function<void()> onActivate;
    std::function<void()> onSwitchSide;
    std::function<void()> onNextTab;
    std::function<void()> onDeleteRequested;
    std::function<void()> onPreviewRequested;
    /// Escape, with nothing of the pane's own to end. True: it has closed something.
    std::function<bool()> onEscape;
    std::function<void(PaneModel::Marks change)> onMaskWanted;
    std::function<void(std::string from, std::string to)> onRenameRequested;
    std::function<void()> onLocationChanged;
    /// `PaneController::place` answers something else, or may do so.
    std::function<void()> onPlaceShown;
    /// The user sorts by something else, or shows or hides files.
    std::function<void()> onViewOptionsChanged;
    /// The cursor stands in the folder on show, which is where the user is. No name: on the parent row.
    std::function<void(std::optional<std::string> name)> onCursorMoved;
    /// The place that was remembered of a connection is not there any more.
    std::function<void(PaneSpec const &place)> onPlaceGone;
    std::function<void(std::string path)> onOpenFile;
    std::function<void()> onConnectionMenuWanted;
    std::function<void(ConnectionItem const &item)> onConnectionPicked;
    std::function<void(Text title, std::string words)> onDetailsWanted;
};

} // namespace tw
