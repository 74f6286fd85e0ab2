#pragma once

#include "Tarnwick/Commands/CommandRow.h"

#include <QKeySequence>
#include <QList>
#include <QString>

namespace tw {

/// The keys of a command for Qt; none if a pane acts on them.
QList<QKeySequence> shortcutsOf(CommandRow const &row);

/// The main key of a command in the words of this desktop.
QString keyTextOf(CommandRow const &row);

} // namespace tw
