#include "Tarnwick/Toolkit/Notices/NoticeSign.h"

#include "Tarnwick/Toolkit/Notices/NoticeColors.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tw {

NoticeSign::NoticeSign(QWidget *parent) : QWidget(parent) {}

void NoticeSign::setKind(PaneNotice::Kind wanted)
{
    kind = wanted;
    update();
}

QSize NoticeSign::sizeHint() const
{
    auto const edge = fontMetrics().height();
    return {edge, edge};
}

void NoticeSign::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    auto const edge = static_cast<qreal>(std::min(width(), height()));
    auto const color = palette().color(QPalette::Link); // the strip's colour of signs
    painter.setBrush(color);
    painter.setPen(QPen(color, edge / 10, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (kind == PaneNotice::Kind::failure) {
        paintWarning(painter, edge);
        return;
    }
    painter.setBrush(Qt::NoBrush);
    auto const middle = QPointF(edge / 2, edge / 2);
    painter.drawEllipse(middle, edge * 0.4, edge * 0.4);
    painter.drawLine(middle, middle - QPointF(0, edge * 0.25));
    painter.drawLine(middle, middle + QPointF(edge * 0.18, 0));
}

void NoticeSign::paintWarning(QPainter &painter, qreal edge) const
{
    QPainterPath triangle(QPointF(edge / 2, edge * 0.12));
    triangle.lineTo(edge * 0.92, edge * 0.86);
    triangle.lineTo(edge * 0.08, edge * 0.86);
    triangle.closeSubpath();
    painter.drawPath(triangle);
    painter.setPen(QPen(palette().color(QPalette::Window), edge / 8, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(edge / 2, edge * 0.38), QPointF(edge / 2, edge * 0.58));
    painter.drawPoint(QPointF(edge / 2, edge * 0.74));
}

} // namespace tw
