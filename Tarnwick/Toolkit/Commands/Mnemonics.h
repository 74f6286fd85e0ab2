#pragma once

#include <QList>
#include <QStringList>

class QAction;

namespace tw {

/// The underlined letters by which the items of a menu are chosen.
namespace Mnemonics {

/// The titles with an ampersand before a letter or digit of their own: the first of a word if one is free. A title that
/// has a letter keeps it; one whose letters are all taken gets none. An ampersand of a title itself is doubled, as
/// everywhere in Qt; behind a tab stands a key.
QStringList given(QStringList titles);

/// Gives letters to the items of a menu, or the menus of a bar.
void give(QList<QAction *> const &actions);

} // namespace Mnemonics

} // namespace tw
