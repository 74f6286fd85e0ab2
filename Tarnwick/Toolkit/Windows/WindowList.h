#pragma once

#include <vector>

class QMenu;
class QWidget;

/// The open windows at the end of a menu, to go from one to another.
namespace tw::WindowList {

/// More would take the screen.
inline constexpr std::size_t mostWindows = 12;

/// Lists `here`, with a check mark, and `others`, the newest last, in the place of what was listed before. Without
/// others nothing is listed.
void fill(QMenu &menu, QWidget &here, std::vector<QWidget *> const &others);

} // namespace tw::WindowList
