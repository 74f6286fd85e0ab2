// What a pane's table does with the mouse.

#include "Tarnwick/Toolkit/Table/NameEditor.h"
#include "Tarnwick/Toolkit/Table/PaneTableView.h"

#include <QApplication>
#include <QMouseEvent>

#include <utility>

namespace tw {

void PaneTableView::mousePressEvent(QMouseEvent *event)
{
    auto const row = rowAt(event->position().toPoint().y());
    auto const held = event->modifiers();
    auto const isPlain = !(held & (Qt::ShiftModifier | Qt::ControlModifier));
    nameMayBeClickedAgain = isAgainOnName(*event) ? std::optional(row) : std::nullopt;
    keyboardCameByClick = false;
    rowPress.reset();
    auto const endsEdit = std::exchange(isEditEndedByPress, false);
    if (event->button() != Qt::LeftButton || row < 0)
        return;
    // With a key held a press marks. One that ends the edit of a name drags nothing: the name is about to change.
    if (isPlain && !endsEdit)
        rowPress = {.row = row, .place = event->position().toPoint()};
    // Marked rows are dragged together: a click that would take the marks away is one when the button goes up.
    if (rowPress && model()->index(row, 0).data(PaneTableModel::markedRole).toInt() == Qt::Checked)
        rowPress->isClickPending = true;
    else if (onRowClicked)
        onRowClicked(row, {.shift = held.testFlag(Qt::ShiftModifier), .control = held.testFlag(Qt::ControlModifier)});
}

void PaneTableView::mouseMoveEvent(QMouseEvent *event)
{
    // Not to the base class, which would select along the way.
    auto const isFar = rowPress && (event->position().toPoint() - rowPress->place).manhattanLength() >=
                                       QApplication::startDragDistance();
    if (!isFar || !event->buttons().testFlag(Qt::LeftButton))
        return;
    rowPress.reset();
    nameMayBeClickedAgain.reset();
    if (onDragWanted)
        onDragWanted();
}

void PaneTableView::mouseReleaseEvent(QMouseEvent *event)
{
    auto const pressed = std::exchange(rowPress, std::nullopt);
    if (pressed && pressed->isClickPending && event->button() == Qt::LeftButton && onRowClicked)
        onRowClicked(pressed->row, {});
    auto const row = std::exchange(nameMayBeClickedAgain, std::nullopt);
    if (row && row == rowAt(event->position().toPoint().y()) && onNameClickedAgain)
        onNameClickedAgain(*row);
}

bool PaneTableView::isAgainOnName(QMouseEvent const &press) const
{
    auto const place = press.position().toPoint();
    return press.button() == Qt::LeftButton && press.modifiers() == Qt::NoModifier && !keyboardCameByClick &&
           hasFocus() && rowAt(place.y()) == look.cursorRow &&
           columnAt(place.x()) == static_cast<int>(PaneColumn::name);
}

void PaneTableView::mouseDoubleClickEvent(QMouseEvent *event)
{
    // Who marks with clicks in quick succession opens nothing.
    if (event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier)) {
        mousePressEvent(event);
        return;
    }
    nameMayBeClickedAgain.reset();
    rowPress.reset();
    auto const row = rowAt(event->position().toPoint().y());
    if (event->button() == Qt::LeftButton && row >= 0 && onRowDoubleClicked)
        onRowDoubleClicked(row);
}

} // namespace tw
