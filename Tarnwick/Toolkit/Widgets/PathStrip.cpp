#include "Tarnwick/Toolkit/Widgets/PathStrip.h"

#include "Tarnwick/Toolkit/Appearance/Contrast.h"

#include <QPainter>

namespace tw::PathStrip {

QColor faded(QColor const &color, QPalette const &palette)
{
    return blend(color, palette.color(QPalette::Base), inactiveShare);
}

void paintLine(QPainter &painter, QRect const &part, QPalette const &palette, bool isActive)
{
    auto const line = QRect(part.left(), part.bottom() + 1 - lineHeight, part.width(), lineHeight);
    painter.fillRect(line, palette.color(isActive ? QPalette::Highlight : QPalette::Window));
}

} // namespace tw::PathStrip
