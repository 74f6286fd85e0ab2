#pragma once

#include "TWCore/Model/Text.h"
#include "Tarnwick/Operations/TransferJob.h"

#include <functional>
#include <optional>

namespace tw {

/// What a DropHover needs of a toolkit.
///
/// Threads: main context only.
class DropDisplay {
public:
    struct Target {
        enum class Mark { none, row, pane };

        Mark mark = Mark::none; ///< what is outlined
        int row = 0;
        Text words = {}; ///< in place of the status line; empty: the status line is there again

        friend bool operator==(Target const &, Target const &) = default;
    };

    virtual ~DropDisplay() = default;

    virtual void showDropTarget(Target const &target) = 0;

    /// Scrolls the rows under the drag, and reports the drag again: another row may be under it.
    virtual void scrollRows(int pixels) = 0;

    /// Offers a choice at the pointer. Nothing is called if the user chooses neither.
    virtual void askHow(std::function<void(TransferKind kind)> onChosen) = 0;
};

} // namespace tw
