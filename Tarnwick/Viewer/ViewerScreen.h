#pragma once

#include "TWCore/Model/Text.h"
#include "TWCore/Model/TextDecoding.h"
#include "TWEngine/Preview/PictureAnswer.h"
#include "Tarnwick/Viewer/ViewerMode.h"
#include "Tarnwick/Viewer/ViewerPlace.h"

#include <memory>
#include <vector>

namespace tw {

/// All that a viewer shows.
struct ViewerScreen {
    ViewerMode mode = ViewerMode::text;
    TextDecoding::Encoding encoding = TextDecoding::Encoding::utf8;
    bool wraps = true;
    bool isBusy = false; ///< something is being read
    bool isFollowed = false;
    std::vector<ViewerRow> rows = {};
    int leftColumn = 0; ///< the first that is on screen
    /// What is selected; nothing if both are the same.
    ViewerPlace selectedFrom = {};
    ViewerPlace selectedTo = {};
    double top = 0;                              ///< how far into the file the first row is, of 1
    double page = 1;                             ///< how much of the file is on screen, of 1
    std::shared_ptr<Picture const> picture = {}; ///< null: none, or not yet
    Text status = {};
};

} // namespace tw
