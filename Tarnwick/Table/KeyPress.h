#pragma once

#include <string>

namespace tw {

/// The keys that a pane knows by position, whatever the keyboard layout. Anything else is `character`.
enum class Key {
    home,
    end,
    pageUp,
    pageDown,
    up,
    down,
    left,
    right,
    enter, ///< both of them
    tab,
    space,
    backspace,
    forwardDelete,
    insert,
    escape,
    keypadPlus,
    keypadMinus,
    keypadTimes,
    leftBracket,  ///< where an American keyboard has "[", with Control
    rightBracket, ///< where an American keyboard has "]", with Control
    character,
};

/// One key that went down, with what was held.
struct KeyPress {
    Key key = Key::character;
    bool shift = false;
    bool control = false;
    bool alt = false;
    bool meta = false;
    std::string text; ///< what it types, UTF-8

    bool isPlain() const noexcept { return !shift && !control && !alt && !meta; }

    bool isShiftAlone() const noexcept { return shift && !control && !alt && !meta; }
};

/// What was held when the mouse was pressed.
struct ClickModifiers {
    bool shift = false;
    bool control = false;
};

} // namespace tw
