#pragma once

#include "Tarnwick/Table/PaneCells.h"
#include "Tarnwick/Toolkit/Appearance/PaneLook.h"

#include <QAbstractItemDelegate>

namespace tw {

/// Paints one cell of a pane.
///
/// Lifetime: `look` outlives it.
class PaneDelegate final : public QAbstractItemDelegate {
public:
    explicit PaneDelegate(PaneLook const &shared, QObject *parent) : QAbstractItemDelegate(parent), look(shared) {}

    void paint(QPainter *painter, QStyleOptionViewItem const &option, QModelIndex const &index) const override;
    QSize sizeHint(QStyleOptionViewItem const &option, QModelIndex const &index) const override;

    /// What stands in a cell.
    static QString textOf(PaneLook const &look, QModelIndex const &cell);

    static QFont const &fontOf(PaneFonts const &fonts, PaneColumn column);

    /// Where the text of a cell stands.
    static QRect textRect(PaneFonts const &fonts, QRect const &cell, PaneColumn column);

    /// Between the edge of a cell and its text, on each side.
    static constexpr int cellMargin = 6;

    /// Between an icon and the text.
    static constexpr int iconGap = 6;

private:
    bool isFilled(QModelIndex const &index) const;
    QColor textColor(QModelIndex const &index) const;
    void paintIcon(QPainter &painter, QRect cell, QModelIndex const &index) const;

    PaneLook const &look;
};

} // namespace tw
