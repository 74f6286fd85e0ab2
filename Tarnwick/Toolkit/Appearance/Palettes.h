#pragma once

#include <QPalette>

namespace tw {

/// Our own colours for the two schemes of a desktop that says which one it wants, but brings no colours along.
/// Complete: every role in every group.
namespace Palettes {

QPalette dark();
QPalette light();

bool isDark(QPalette const &palette);

/// Of a thing that lies over the window and has nearly its colour. Dark edges are not seen on dark ground.
QColor edge(QPalette const &palette);

} // namespace Palettes

} // namespace tw
