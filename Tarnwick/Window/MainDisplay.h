#pragma once

#include "Tarnwick/Operations/Dialogs.h"

namespace tw {

/// What a MainWindowController needs of its window beyond the panes themselves.
///
/// Threads: main context only.
class MainDisplay {
public:
    virtual ~MainDisplay() = default;

    virtual void equalizePanes() = 0;
    virtual void closeWindow() = 0;

    /// The questions that stand over this window.
    virtual std::shared_ptr<Dialogs> dialogs() = 0;
};

} // namespace tw
