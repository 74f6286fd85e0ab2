#pragma once

#include "Tarnwick/Settings/PaneSide.h"

namespace tw {

class MainWindowController;
class PaneIcons;
class PaneView;

/// Files of a pane that the mouse draws out of its rows.
namespace DragOut {

/// Drags what an operation would work on, until it is dropped or the drag is cancelled. The toolkit runs its own event
/// loop meanwhile; `controller` and `view` may be gone afterwards.
void run(MainWindowController &controller, PaneSide side, PaneView &view);

} // namespace DragOut

} // namespace tw
