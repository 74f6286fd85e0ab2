#pragma once

#include "Tarnwick/Commands/KeyStroke.h"

#include <QKeyEvent>

namespace tw {

/// A key event in the words of the table of commands.
KeyStroke keyStrokeOf(QKeyEvent const &event);

} // namespace tw
