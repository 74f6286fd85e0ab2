#pragma once

#include "Tarnwick/Table/KeyPress.h"

#include <QKeyEvent>

namespace tw {

/// What a pane needs to know of a key that went down.
KeyPress keyPressOf(QKeyEvent const &event);

} // namespace tw
