#pragma once

#include <QIcon>

#include <string_view>

/// The pictures of buttons: from the desktop's icon theme where that has one that can be seen, else our own.
namespace tw::SymbolIcons {

/// `themeName` is one of the freedesktop naming specification, `ownName` that of a drawing of ours. A theme may have
/// black symbols for a light desktop only, so one that hardly differs from `background` is not taken.
QIcon icon(std::string_view themeName, std::string_view ownName, QColor const &background);

/// Our own drawing. It has the colour of text, and is drawn anew for each size and scale.
QIcon ownIcon(std::string_view name);

} // namespace tw::SymbolIcons
