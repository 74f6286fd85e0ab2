// What a pane does with a key or a click.

#include "Tarnwick/Panes/PaneController.h"

namespace tw {

bool PaneController::handleKey(KeyPress const &key)
{
    wasTouched = true; // before the key makes a new wish
    if (key.isShiftAlone()) {
        if (auto const target = cursorTarget(key.key)) {
            cursor.markUpTo(*target);
            cursorAndMarksChanged();
            return true;
        }
    }
    switch (key.key) {
    case Key::keypadTimes:
        if (!hasAllRows())
            return true;
        cursor.invertMarks();
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
        if (giveUp())
            return true;
        cursor.unmarkAll();
        marksChanged();
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
    case Key::left:
    case Key::right:
        // The rows have no use for these keys, so they lead to the buttons of the strip.
        if (!notices.onShow())
            return false;
        display->offerNotice();
        return true;
    default:
        break;
    }
    auto const target = cursorTarget(key);
    if (!target)
        return false;
    cursor.moveTo(*target);
    cursorMoved();
    refreshStatus();
    return true;
}

std::optional<int> PaneController::cursorTarget(Key key) const
{
    return cursor.target(key, display->wholeVisibleRows());
}

bool PaneController::toggleMarkAndAdvance()
{
    if (!cursor.row())
        return false;
    cursor.toggleMarkAndAdvance();
    cursorAndMarksChanged();
    return true;
}

void PaneController::marksChanged()
{
    display->redrawRows();
    refreshStatus();
}

void PaneController::cursorAndMarksChanged()
{
    cursorMoved();
    marksChanged();
}

void PaneController::rowClicked(int row, ClickModifiers held)
{
    wasTouched = true;
    if (row < 0 || row >= rows.rowCount())
        return;
    if (held.shift) {
        // With Control the marks that are there stay.
        cursor.markUpTo(row, held.control ? PaneCursor::OtherMarks::kept : PaneCursor::OtherMarks::dropped);
        cursorAndMarksChanged();
    } else if (held.control) {
        cursor.toggleMark(row);
        cursorAndMarksChanged();
    } else {
        cursor.moveTo(row);
        cursorMoved();
        if (!rows.isUnmarked()) {
            cursor.unmarkAll();
            marksChanged();
        }
    }
}

void PaneController::rowDoubleClicked(int row)
{
    wasTouched = true;
    if (row < 0 || row >= rows.rowCount())
        return;
    cursor.moveTo(row);
    cursorMoved();
    openSelection();
}

void PaneController::moveCursorTo(int row)
{
    wasTouched = true;
    if (row < 0 || row >= rows.rowCount())
        return;
    cursor.moveTo(row);
    cursorMoved();
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
