#pragma once

#include "Tarnwick/Clipboard/Clipboard.h"
#include "Tarnwick/Operations/Dialogs.h"
#include "Tarnwick/Viewer/ViewerController.h"

#include <string>

namespace tw {

/// What a MainWindowController needs of its window beyond the panes themselves.
///
/// Threads: main context only.
class MainDisplay {
public:
    virtual ~MainDisplay() = default;

    virtual void equalizePanes() = 0;
    virtual void closeWindow() = 0;
    virtual void minimizeWindow() = 0;
    virtual void customizeToolBar() = 0;
    virtual bool hasBackgroundWork() const = 0;
    virtual void goToBackgroundWork() = 0;
    virtual void customizeColumns() = 0;

    /// Puts a text on the clipboard; the names in it may hold any bytes.
    virtual void copyText(std::string const &text) = 0;

    virtual std::shared_ptr<Clipboard> clipboard() = 0;

    /// Shows a file in a window of its own.
    virtual void openViewer(std::shared_ptr<ViewerController> viewer) = 0;

    /// The questions that stand over this window.
    virtual std::shared_ptr<Dialogs> dialogs() = 0;
};

} // namespace tw
