// What a pane does with a key or a click.

#include "Tarnwick/Panes/PaneController.h"

namespace tw {

bool PaneController::handleKey(KeyPress const &key)
{
    if (key.isShiftAlone() && cursor) {
        if (auto const target = cursorTarget(key.key)) {
            markUpTo(*target);
            return true;
        }
    }
    switch (key.key) {
    case Key::keypadTimes:
        rows.invertMarks();
        marksChanged();
        return true;
    case Key::insert:
        return toggleMarkAndAdvance();
    case Key::space:
        return key.isShiftAlone() && toggleMarkAndAdvance();
    case Key::tab:
        if (key.control || !callbacks.onSwitchSide)
            return false;
        callbacks.onSwitchSide();
        return true;
    case Key::escape:
        clearMarks();
        return true;
    default:
        return key.isPlain() && handlePlainKey(key.key);
    }
}

bool PaneController::handlePlainKey(Key key)
{
    switch (key) {
    case Key::enter:
        openSelection();
        return true;
    case Key::backspace:
        goUp();
        return true;
    default:
        break;
    }
    auto const target = cursorTarget(key);
    if (!target)
        return false;
    moveCursorTo(*target);
    refreshStatus();
    return true;
}

std::optional<int> PaneController::cursorTarget(Key key) const
{
    if (!cursor)
        return std::nullopt;
    // A page less one row, so that the eye finds the row that it was on.
    auto const pageStride = std::max(display->wholeVisibleRows() - 1, 1);
    auto const target = [&]() -> std::optional<int> {
        switch (key) {
        case Key::home:
            return 0;
        case Key::end:
            return lastRow();
        case Key::pageUp:
            return *cursor - pageStride;
        case Key::pageDown:
            return *cursor + pageStride;
        case Key::up:
            return *cursor - 1;
        case Key::down:
            return *cursor + 1;
        default:
            return std::nullopt;
        }
    }();
    return target ? std::optional(std::clamp(*target, 0, lastRow())) : std::nullopt;
}

void PaneController::moveCursorTo(int row)
{
    setCursor(row);
    markAnchor = row;
}

void PaneController::markUpTo(int row)
{
    // The anchor stays, so that the range shrinks and grows with the cursor.
    rows.marked.clear();
    rows.markRange(markAnchor, row, PaneModel::Marks::insert);
    setCursor(row);
    marksChanged();
}

bool PaneController::toggleMarkAndAdvance()
{
    if (!cursor)
        return false;
    rows.toggleMark(*cursor);
    moveCursorTo(std::min(*cursor + 1, lastRow()));
    marksChanged();
    return true;
}

void PaneController::clearMarks()
{
    rows.marked.clear();
    markAnchor = cursor.value_or(0);
    marksChanged();
}

void PaneController::marksChanged()
{
    display->redrawRows();
    refreshStatus();
}

void PaneController::rowClicked(int row, ClickModifiers held)
{
    if (row < 0 || row > lastRow())
        return;
    if (held.shift || held.control) {
        clickMark(row, held);
        return;
    }
    moveCursorTo(row);
    if (!rows.marked.empty()) {
        rows.marked.clear();
        marksChanged();
    }
}

void PaneController::clickMark(int row, ClickModifiers held)
{
    if (held.shift) {
        // The anchor stays, as with the keys; with Control the marks that are there stay too.
        if (!held.control)
            rows.marked.clear();
        rows.markRange(markAnchor, row, PaneModel::Marks::insert);
    } else {
        rows.toggleMark(row);
        markAnchor = row;
    }
    setCursor(row);
    marksChanged();
}

void PaneController::rowDoubleClicked(int row)
{
    if (row < 0 || row > lastRow())
        return;
    moveCursorTo(row);
    openSelection();
}

void PaneController::connectionMenuWanted()
{
    if (callbacks.onConnectionMenuWanted)
        callbacks.onConnectionMenuWanted();
}

void PaneController::connectionPicked(ConnectionItem const &item)
{
    if (callbacks.onConnectionPicked)
        callbacks.onConnectionPicked(item);
}

void PaneController::activated()
{
    if (callbacks.onActivate)
        callbacks.onActivate();
}

} // namespace tw
