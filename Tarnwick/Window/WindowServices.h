#pragma once

#include "Tarnwick/Clipboard/ScratchFile.h"
#include "Tarnwick/Dragging/DragFetch.h"
#include "Tarnwick/Operations/ClaimedNames.h"
#include "Tarnwick/Operations/OpeningServices.h"

#include <functional>
#include <memory>

namespace tw {

class Archives;
class Transfer;

/// What the commands of a window need of the program. Each function may be empty.
struct WindowServices {
    std::function<std::shared_ptr<Transfer>()> transfers = {}; ///< moves the bytes of one copy or one move
    std::function<std::shared_ptr<Archives>()> archives = {};  ///< does one piece of work on an archive
    DragFetch::MakeFolder dragFolders = {}; ///< empty: files of a host are dragged within the program only
    MakeScratchFile scratchFiles = {};      ///< for what is pasted as a file
    OpeningServices opening = {};           ///< without applications, Return on a file beeps
    /// Shared by all windows: what one operation changes, no other one may.
    std::shared_ptr<ClaimedNames> claims = std::make_shared<ClaimedNames>();
};

} // namespace tw
