#pragma once

#include <QPalette>

class QPainter;
class QRect;

/// The look of the strip above a table, which the connection's button and the path share so that they are one.
namespace tw::PathStrip {

/// Between the edge of a part and its text.
inline constexpr int sideMargin = 4;
inline constexpr int verticalMargin = 2;

/// Below the parts, where the eye looks for the place: the line that says which pane is the active one.
inline constexpr int lineHeight = 2;

/// How much of its colour a text in the inactive pane keeps.
inline constexpr double inactiveShare = 0.65;

/// `color` as it is on the strip of the pane that is not the active one.
QColor faded(QColor const &color, QPalette const &palette);

void paintLine(QPainter &painter, QRect const &part, QPalette const &palette, bool isActive);

} // namespace tw::PathStrip
