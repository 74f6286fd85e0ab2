#pragma once

#include "Tarnwick/Viewer/ViewerPlace.h"

#include <QFont>
#include <QPalette>
#include <QRect>

class QPainter;

namespace tw {

/// Paints rows of text into a grid of cells that are equally wide, whatever font a character comes from.
class RowPainter {
public:
    explicit RowPainter(QFont const &font);

    QFont const &font() const noexcept { return rowFont; }

    qreal cellWidth() const noexcept { return cell; }

    int rowHeight() const noexcept { return height; }

    /// What of a row is selected: from one character up to another one.
    struct Selection {
        std::size_t from = 0;
        std::size_t to = 0;
        bool withRest = false; ///< what is behind the row too
    };

    /// Paints a row with its first visible column at the left of `room`.
    void paint(QPainter &painter, QRect room, std::u32string const &row, int leftColumn, Selection const &selection,
               QPalette const &palette) const;

private:
    void paintText(QPainter &painter, QPointF origin, std::u32string const &row, std::vector<int> const &columns,
                   int leftColumn) const;

    QFont rowFont;
    qreal cell;
    int height;
    int ascent;
};

} // namespace tw
