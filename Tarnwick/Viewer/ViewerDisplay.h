#pragma once

#include "Tarnwick/Viewer/ViewerKeys.h"
#include "Tarnwick/Viewer/ViewerScreen.h"

#include <string>

namespace tw {

/// The window of a viewer, as a ViewerController needs it.
///
/// Threads: main context only.
class ViewerDisplay {
public:
    virtual ~ViewerDisplay() = default;

    virtual void show(ViewerScreen const &screen) = 0;

    /// What only a window can do: to close, to ask, to change the size of its text.
    virtual void performInWindow(ViewerAction action) = 0;

    virtual void copyText(std::u32string const &text) = 0;
    virtual void beep() = 0;
};

} // namespace tw
