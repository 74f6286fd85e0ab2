#pragma once

#include "Tarnwick/Window/DropHover.h"

#include <QObject>
#include <QPoint>

class QDropEvent;

namespace tw {

class PaneView;
class TabStrip;

/// One side of the window as something to drop files on: rows, tabs, the path, and the pane as a whole.
///
/// Lifetime: its parent, the widget of the side, has all other widgets; `hover` outlives it.
class DropArea final : public QObject, private DropDisplay {
public:
    DropArea(DropHover &hover, PaneView &pane, TabStrip &tabs, QWidget &side);
    ~DropArea() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

    /// Other rows are under the drag, if there is one.
    void rowsChanged();

private:
    void showDropTarget(Target const &target) override;
    void scrollRows(int pixels) override;
    void askHow(std::function<void(TransferKind kind)> onChosen) override;

    void begin(QDropEvent &event);
    void move(QDropEvent &event);
    void drop(QDropEvent &event);
    void end();
    DropSpot spotAt(QPoint place) const;
    DropSpot spotInRows(QPoint place) const;

    DropHover &drag;
    PaneView &view;
    TabStrip &strip;
    QWidget &area;

    // While something is dragged over the side.
    DropHover::Offer offer; ///< null: nothing is
    QPoint place;
    DragKeys held;
};

} // namespace tw
