#include "Tarnwick/Toolkit/Dragging/DragPicture.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tw::DragPicture {

namespace {

constexpr int iconSize = 16;
constexpr int margin = 6;
constexpr int mostNameWidth = 220; ///< a long name does not hide the target
constexpr int cursorSize = 32;

QPixmap empty(QSize size, qreal scale)
{
    QPixmap picture(size * scale);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    return picture;
}

} // namespace

QPixmap of(QIcon const &icon, QString const &name, std::size_t count, QWidget const &origin)
{
    auto const metrics = origin.fontMetrics();
    auto const shown = metrics.elidedText(name, Qt::ElideMiddle, mostNameWidth);
    auto const number = count > 1 ? QString::number(count) : QString();
    auto const height = std::max(metrics.height(), iconSize) + margin;
    auto const numberWidth = number.isEmpty() ? 0 : std::max(metrics.horizontalAdvance(number) + 2 * margin, height);
    auto const textLeft = margin + iconSize + margin;
    auto const width = textLeft + metrics.horizontalAdvance(shown) + margin + numberWidth;

    auto picture = empty({width, height}, origin.devicePixelRatioF());
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    auto const &palette = origin.palette();
    painter.setPen(palette.color(QPalette::PlaceholderText)); // seen on light and on dark ground
    painter.setBrush(palette.color(QPalette::Base));
    painter.drawRoundedRect(QRectF(0.5, 0.5, width - 1, height - 1), 4, 4);
    icon.paint(&painter, QRect(margin, (height - iconSize) / 2, iconSize, iconSize));
    painter.setFont(origin.font());
    painter.setPen(palette.color(QPalette::Text));
    painter.drawText(QRect(textLeft, 0, width - textLeft, height), Qt::AlignVCenter | Qt::TextSingleLine, shown);
    if (number.isEmpty())
        return picture;
    QRect const badge(width - numberWidth, 0, numberWidth, height);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette.color(QPalette::Highlight));
    painter.drawRoundedRect(badge, 4, 4);
    painter.setPen(palette.color(QPalette::HighlightedText));
    painter.drawText(badge, Qt::AlignCenter, number);
    return picture;
}

QPixmap askingCursor(qreal scale)
{
    auto picture = empty({cursorSize, cursorSize}, scale);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::white);
    painter.setBrush(Qt::black);
    painter.drawPolygon(QPolygonF({{0, 0}, {0, 15}, {3.5, 12}, {6, 18}, {8.5, 17}, {6, 11}, {11, 11}}));
    painter.drawEllipse(QRectF(13, 13, 15, 15));
    auto font = painter.font();
    font.setPixelSize(12);
    font.setBold(true);
    painter.setFont(font);
    painter.drawText(QRectF(13, 13, 15, 15), Qt::AlignCenter, QStringLiteral("?"));
    return picture;
}

} // namespace tw::DragPicture
