// What a pane does with a key or a click.

#include "Tarnwick/Panes/PaneController.h"

namespace tw {

bool PaneController::handleKey(KeyPress const &key)
{
    wasTouched = true; // before the key makes a new wish
    pendingRename.cancel();
    if (key.key != Key::character)
        search.settle();
    if (key.isShiftAlone()) {
        if (auto const target = cursorTarget(key.key)) {
            cursor.markUpTo(*target);
            cursorAndMarksChanged();
            return true;
        }
    }
    return handleModifiedKey(key) || (key.isPlain() && handlePlainKey(key.key));
}

/// The keys that mean something, or something else, with others held.
bool PaneController::handleModifiedKey(KeyPress const &key)
{
    switch (key.key) {
    case Key::keypadPlus:
        return wantMask(PaneModel::Marks::insert);
    case Key::keypadMinus:
        return wantMask(PaneModel::Marks::remove);
    case Key::keypadTimes:
        invertMarks();
        return true;
    case Key::tab:
        return ask(key.control ? callbacks.onNextTab : callbacks.onSwitchSide);
    case Key::backspace:
        return handleBackspace(key);
    case Key::space:
        return handleSpace(key);
    case Key::insert:
        return toggleMarkAndAdvance();
    case Key::forwardDelete:
        return ask(callbacks.onDeleteRequested);
    case Key::escape:
        return handleEscape();
    case Key::left:
    case Key::right:
    case Key::leftBracket:
    case Key::rightBracket:
        return goThroughHistory(key);
    case Key::character:
        return typeToSearch(key);
    default:
        return false;
    }
}

bool PaneController::handlePlainKey(Key key)
{
    switch (key) {
    case Key::enter:
        openSelection();
        return true;
    case Key::left:
    case Key::right:
        return handleSidewaysKey(key);
    case Key::up:
    case Key::down:
        search.end();
        return moveCursor(key);
    default:
        return moveCursor(key);
    }
}

bool PaneController::handleSidewaysKey(Key key)
{
    if (isSearching()) {
        search.takeComposition();
        search.moveCaret(key == Key::left ? SearchText::Step::back : SearchText::Step::forward);
        return true;
    }
    // The rows have no use for these keys, so they lead to the buttons of the strip.
    if (!notices.onShow())
        return false;
    display->offerNotice();
    return true;
}

bool PaneController::handleBackspace(KeyPress const &key)
{
    if (key.control)
        return ask(callbacks.onDeleteRequested);
    if (!key.isPlain() || !search.text().composing().empty())
        return false;
    if (isSearching())
        return search.deleteBeforeCaret();
    goUp();
    return true;
}

bool PaneController::handleSpace(KeyPress const &key)
{
    if (key.isShiftAlone())
        return toggleMarkAndAdvance();
    if (!key.isPlain())
        return false;
    if (!isSearching())
        return ask(callbacks.onPreviewRequested);
    search.takeComposition();
    search.type(" ");
    return true;
}

bool PaneController::handleEscape()
{
    if (isSearching()) {
        search.end();
        return true;
    }
    if (giveUp() || (callbacks.onEscape && callbacks.onEscape()))
        return true;
    cursor.unmarkAll();
    marksChanged();
    return true;
}

bool PaneController::moveCursor(Key key)
{
    auto const target = cursorTarget(key);
    if (!target)
        return false;
    cursor.moveTo(*target);
    cursorMoved();
    refreshStatus();
    return true;
}

/// Arrows with Alt, brackets with Control.
bool PaneController::goThroughHistory(KeyPress const &key)
{
    auto const isArrow = key.key == Key::left || key.key == Key::right;
    if (key.alt != isArrow || key.control == isArrow)
        return false;
    key.key == Key::left || key.key == Key::leftBracket ? goBack() : goForward();
    return true;
}

/// Leaves a key to the pane's owner, if there is one for it.
bool PaneController::ask(std::function<void()> const &owner)
{
    if (owner)
        owner();
    return static_cast<bool>(owner);
}

bool PaneController::wantMask(PaneModel::Marks change)
{
    if (!callbacks.onMaskWanted)
        return false;
    callbacks.onMaskWanted(change);
    return true;
}

bool PaneController::typeToSearch(KeyPress const &key)
{
    auto const isPrintable =
        !key.text.empty() && static_cast<unsigned char>(key.text.front()) >= ' ' && key.text.front() != '\x7F';
    if (key.control || key.alt || key.meta || !isPrintable)
        return false;
    textTyped(key.text);
    return true;
}

void PaneController::textTyped(std::string_view text)
{
    wasTouched = true;
    search.type(text);
}

void PaneController::textComposed(std::string text)
{
    if (text.empty() && search.text().composing().empty())
        return;
    wasTouched = true;
    search.compose(std::move(text));
}

PaneSearch::Events PaneController::searchEvents()
{
    return {.onFound =
                [this](int row) {
                    cursor.moveTo(row);
                    cursorMoved();
                },
            .onText = [this](Text text) { showStatus(std::move(text)); },
            .onNoMatch = [this] { display->beep(); },
            .onCompositionEnd = [this](PaneDisplay::Composition how) { display->endComposition(how); },
            .onEnded = [this] { refreshStatus(); }};
}

std::optional<int> PaneController::cursorTarget(Key key) const
{
    return cursor.target(key, display->wholeVisibleRows());
}

bool PaneController::toggleMarkAndAdvance()
{
    auto const row = cursor.row();
    if (!row)
        return false;
    cursor.toggleMark(*row);
    display->redrawRows(); // while the cursor is there: a screen reader is told of the mark under the cursor
    cursor.moveTo(*row + 1);
    cursorMoved();
    refreshStatus();
    return true;
}

void PaneController::markAll(PaneModel::Marks change)
{
    if (!hasAllRows())
        return;
    change == PaneModel::Marks::insert ? cursor.markAll() : cursor.unmarkAll();
    marksChanged();
}

void PaneController::invertMarks()
{
    if (!hasAllRows())
        return;
    cursor.invertMarks();
    marksChanged();
}

void PaneController::markMatching(std::string const &mask, PaneModel::Marks change)
{
    auto const count = cursor.markMatching(mask, change);
    marksChanged();
    if (count == 0)
        showStatus({"nothing matched %@", {mask}});
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
    pendingRename.cancel();
    search.settle();
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
    pendingRename.cancel();
    search.settle();
    if (row < 0 || row >= rows.rowCount())
        return;
    cursor.moveTo(row);
    cursorMoved();
    openSelection();
}

void PaneController::moveCursorTo(int row)
{
    wasTouched = true;
    search.settle();
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
