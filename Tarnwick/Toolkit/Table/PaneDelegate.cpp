#include "Tarnwick/Toolkit/Table/PaneDelegate.h"

#include "Tarnwick/Toolkit/Table/PaneTableModel.h"

#include <QPainter>

namespace tw {

namespace {

/// The end of a long name often tells it from its neighbours: a number, a version, a date.
Qt::TextElideMode elisionOf(PaneColumn column)
{
    return column == PaneColumn::name ? Qt::ElideMiddle : Qt::ElideRight;
}

/// What was cut looks as if it were about to go, and can still be read.
constexpr auto opacityOfCut = 0.65;

} // namespace

QString PaneDelegate::textOf(PaneLook const &look, QModelIndex const &cell)
{
    auto const isWholeName = look.hasWholeNames && static_cast<PaneColumn>(cell.column()) == PaneColumn::name;
    return cell.data(isWholeName ? static_cast<int>(PaneTableModel::wholeNameRole) : static_cast<int>(Qt::DisplayRole))
        .toString();
}

QFont const &PaneDelegate::fontOf(PaneFonts const &fonts, PaneColumn column)
{
    switch (column) {
    case PaneColumn::size:
    case PaneColumn::date:
        return fonts.digits;
    case PaneColumn::attr:
        return fonts.fixed;
    case PaneColumn::name:
    case PaneColumn::ext:
        break;
    }
    return fonts.text;
}

QRect PaneDelegate::textRect(PaneFonts const &fonts, QRect const &cell, PaneColumn column)
{
    auto const iconRoom = column == PaneColumn::name ? fonts.iconSize() + iconGap : 0;
    return cell.adjusted(cellMargin + iconRoom, 0, -cellMargin, 0);
}

bool PaneDelegate::isFilled(QModelIndex const &index) const
{
    return look.isActive && look.cursorRow == index.row();
}

QColor PaneDelegate::textColor(QModelIndex const &index) const
{
    auto const &colors = look.colors;
    auto const isMarked = index.data(PaneTableModel::markedRole).toInt() == Qt::Checked;
    if (isFilled(index))
        return isMarked ? colors.markedOnCursor : colors.onCursor;
    if (isMarked)
        return colors.marked;
    if (static_cast<PaneColumn>(index.column()) != PaneColumn::name)
        return colors.detail;
    return index.data(PaneTableModel::folderRole).toBool() ? colors.folder : colors.name;
}

void PaneDelegate::paintIcon(QPainter &painter, QRect cell, QModelIndex const &index) const
{
    auto const edge = look.fonts.iconSize();
    QRect const place(cell.left() + cellMargin, cell.top() + (cell.height() - edge) / 2, edge, edge);
    index.data(Qt::DecorationRole).value<QIcon>().paint(&painter, place);
}

void PaneDelegate::paint(QPainter *painter, QStyleOptionViewItem const &option, QModelIndex const &index) const
{
    auto const column = static_cast<PaneColumn>(index.column());
    if (isFilled(index))
        painter->fillRect(option.rect, look.colors.cursor);

    if (index.data(PaneTableModel::cutRole).toBool())
        painter->setOpacity(opacityOfCut);
    if (column == PaneColumn::name)
        paintIcon(*painter, option.rect, index);
    auto const cell = textRect(look.fonts, option.rect, column);
    auto const &font = fontOf(look.fonts, column);
    auto const text = QFontMetrics(font).elidedText(textOf(look, index), elisionOf(column), cell.width());
    painter->setFont(font);
    painter->setPen(textColor(index));
    // Piled up accents reach far beyond the line of their name.
    painter->setClipRect(option.rect);
    painter->drawText(cell, static_cast<int>(PaneTableModel::alignment(column)) | Qt::TextSingleLine, text);
    painter->setClipping(false);
    painter->setOpacity(1);
}

QSize PaneDelegate::sizeHint(QStyleOptionViewItem const &option, QModelIndex const & /*index*/) const
{
    return {option.rect.width(), look.fonts.rowHeight()};
}

} // namespace tw
