#include "Tarnwick/Toolkit/Table/KeyPresses.h"

namespace tw {

namespace {

Key keypadKeyOf(int key)
{
    switch (key) {
    case Qt::Key_Plus:
        return Key::keypadPlus;
    case Qt::Key_Minus:
        return Key::keypadMinus;
    case Qt::Key_Asterisk:
        return Key::keypadTimes;
    default:
        return Key::character;
    }
}

Key keyOf(int key)
{
    switch (key) {
    case Qt::Key_Home:
        return Key::home;
    case Qt::Key_End:
        return Key::end;
    case Qt::Key_PageUp:
        return Key::pageUp;
    case Qt::Key_PageDown:
        return Key::pageDown;
    case Qt::Key_Up:
        return Key::up;
    case Qt::Key_Down:
        return Key::down;
    case Qt::Key_Left:
        return Key::left;
    case Qt::Key_Right:
        return Key::right;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return Key::enter;
    case Qt::Key_Tab:
    case Qt::Key_Backtab: // what Qt makes of Tab with Shift
        return Key::tab;
    case Qt::Key_Space:
        return Key::space;
    case Qt::Key_Backspace:
        return Key::backspace;
    case Qt::Key_Delete:
        return Key::forwardDelete;
    case Qt::Key_Insert:
    case Qt::Key_Help: // where Insert is on some keyboards
        return Key::insert;
    case Qt::Key_Escape:
        return Key::escape;
    default:
        return Key::character;
    }
}

/// Signs that a pane knows by the place of their key, since many layouts type them with a third hand. X11 and Wayland
/// both count the keys of the kernel from 8.
Key keyAtPosition(quint32 scanCode)
{
    constexpr quint32 leftBracketPosition = 26 + 8;
    constexpr quint32 rightBracketPosition = 27 + 8;
    switch (scanCode) {
    case leftBracketPosition:
        return Key::leftBracket;
    case rightBracketPosition:
        return Key::rightBracket;
    default:
        return Key::character;
    }
}

} // namespace

KeyPress keyPressOf(QKeyEvent const &event)
{
    auto const held = event.modifiers();
    auto key = keyOf(event.key());
    if (key == Key::character && held.testFlag(Qt::KeypadModifier))
        key = keypadKeyOf(event.key());
    if (key == Key::character && held.testFlag(Qt::ControlModifier))
        key = keyAtPosition(event.nativeScanCode());
    return {
        .key = key,
        .shift = held.testFlag(Qt::ShiftModifier),
        .control = held.testFlag(Qt::ControlModifier),
        .alt = held.testFlag(Qt::AltModifier),
        .meta = held.testFlag(Qt::MetaModifier),
        .text = event.text().toStdString(),
    };
}

} // namespace tw
