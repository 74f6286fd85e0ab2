#pragma once

#include "Tarnwick/Settings/PaneSide.h"

#include <QObject>

#include <functional>

namespace tw {

class MainWindowController;
class PaneView;

/// Files of a pane that the mouse draws out of its rows.
class DragOut final : public QObject {
public:
    /// Drags what an operation would work on, until it is dropped or the drag is cancelled. The toolkit runs its own
    /// event loop meanwhile.
    void run(MainWindowController &controller, PaneSide side, PaneView &view);

    bool isRunning() const noexcept { return running; }

    /// Cancels a drag that is running, and calls `then` when the display server knows of the end; at once without a
    /// drag. The toolkit crashes if a window is destroyed while files are dragged out of it.
    void endBefore(std::function<void()> then);

private:
    bool running = false;
    std::function<void()> afterEnd;
};

} // namespace tw
