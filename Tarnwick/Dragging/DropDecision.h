#pragma once

#include "TWCore/Model/Text.h"
#include "Tarnwick/Dragging/DragOffer.h"

#include <string>

namespace tw {

/// The folder that a drag would be dropped into.
struct DropPlace {
    std::string connection; ///< "local", or a host
    std::string folder;
    bool isWritable = true;
    bool isArchive = false; ///< which takes copies only
};

/// What a drop would do. It is shown while the drag is over the target, so that nobody has to try.
struct DropDecision {
    enum class Action {
        refuse,
        copy,
        move,
        ask, ///< the user chooses once the files have been dropped
    };

    Action action = Action::refuse;
    Text words = {}; ///< what would be done, or why nothing can be done

    bool isRefused() const { return action == Action::refuse; }

    /// Without a key a drop copies, which can be repeated and takes nothing away. Shift moves, Alt asks.
    static DropDecision of(DragOffer const &offer, DropPlace const &place, DragKeys held);

    static DropDecision refused(Text reason) { return {.action = Action::refuse, .words = std::move(reason)}; }
};

} // namespace tw
