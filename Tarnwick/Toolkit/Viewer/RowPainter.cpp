#include "Tarnwick/Toolkit/Viewer/RowPainter.h"

#include "Tarnwick/Viewer/RowBreaks.h"

#include <QFontMetricsF>
#include <QPainter>

#include <cmath>

namespace tw {

namespace {

/// Characters that are painted at once: a row of plain text, or one that is as wide as two.
struct Run {
    std::size_t begin;
    std::size_t end;
};

QString textOf(std::u32string const &row, Run run)
{
    return QString::fromUcs4(row.data() + run.begin, static_cast<qsizetype>(run.end - run.begin));
}

bool isNarrow(std::vector<int> const &columns, std::size_t index)
{
    return columns[index + 1] - columns[index] == 1;
}

/// The run that begins at `begin`, with the marks on its last character.
Run runFrom(std::u32string const &row, std::vector<int> const &columns, std::size_t begin)
{
    auto end = begin + 1;
    auto const hasNoWidth = [&](std::size_t index) { return columns[index + 1] == columns[index]; };
    if (row[begin] == U'\t')
        return {begin, end};
    auto const goesOn = isNarrow(columns, begin);
    while (end < row.size() && row[end] != U'\t' && (hasNoWidth(end) || (goesOn && isNarrow(columns, end))))
        ++end;
    return {begin, end};
}

} // namespace

RowPainter::RowPainter(QFont const &font) : rowFont(font)
{
    QFontMetricsF const metrics(rowFont);
    cell = std::max(metrics.horizontalAdvance(QLatin1Char('0')), 1.0);
    // Whole pixels, and some air: a row cuts off what is outside of it.
    ascent = static_cast<int>(std::ceil(metrics.ascent())) + 1;
    height = ascent + static_cast<int>(std::ceil(metrics.descent())) + 1;
}

void RowPainter::paint(QPainter &painter, QRect room, std::u32string const &row, int leftColumn,
                       Selection const &selection, QPalette const &palette) const
{
    auto const columns = RowBreaks::columnsOf(row);
    auto const origin = QPointF(room.left(), room.top());
    painter.setFont(rowFont);
    painter.setPen(palette.color(QPalette::Text));
    paintText(painter, origin, row, columns, leftColumn);
    if (selection.from >= selection.to && !selection.withRest)
        return;
    auto const x = [&](std::size_t character) {
        return room.left() + (columns[std::min(character, row.size())] - leftColumn) * cell;
    };
    auto const right = selection.withRest ? room.right() + 1.0 : x(selection.to);
    auto const selected =
        QRectF(QPointF(x(selection.from), room.top()), QPointF(right, room.top() + height)) & QRectF(room);
    painter.save();
    painter.setClipRect(selected);
    painter.fillRect(selected, palette.brush(QPalette::Highlight));
    painter.setPen(palette.color(QPalette::HighlightedText));
    paintText(painter, origin, row, columns, leftColumn);
    painter.restore();
}

void RowPainter::paintText(QPainter &painter, QPointF origin, std::u32string const &row,
                           std::vector<int> const &columns, int leftColumn) const
{
    for (std::size_t at = 0; at < row.size();) {
        auto const run = runFrom(row, columns, at);
        at = run.end;
        auto const cells = columns[run.end] - columns[run.begin];
        if (row[run.begin] == U'\t' || columns[run.end] <= leftColumn)
            continue;
        QRectF const place(origin.x() + (columns[run.begin] - leftColumn) * cell, origin.y(), cells * cell, height);
        // One from another font stands in the middle of its cells.
        if (isNarrow(columns, run.begin))
            painter.drawText(QPointF(place.left(), place.top() + ascent), textOf(row, run));
        else
            painter.drawText(place, Qt::AlignHCenter | Qt::AlignBottom | Qt::TextSingleLine | Qt::TextDontClip,
                             textOf(row, run));
    }
}

} // namespace tw
