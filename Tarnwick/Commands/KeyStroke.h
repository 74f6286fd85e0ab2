#pragma once

#include "Tarnwick/Commands/Command.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tw {

/// One press of a key: what the keyboard layout makes of the key, which key it is, and what is held with it.
struct KeyStroke {
    std::string sign; ///< UTF-8, a letter as a capital: "C", "[", "F7"
    bool control = false;
    bool alt = false;
    bool shift = false;
    bool meta = false;
    bool keypad = false;
    std::uint32_t scanCode = 0; ///< as X11 and Wayland number the keys: that of evdev, plus 8; 0: not known
};

/// A chord in the notation of the table of commands: "Ctrl+Alt+Shift+C".
std::string spelled(KeyStroke const &stroke);

/// What a key of a US keyboard types without Shift, as a capital; 0 for a key that types no sign.
char usSignOf(std::uint32_t scanCode);

/// The command whose shortcut was pressed.
///
/// What the layout makes of the key goes first, so that a person presses what the menu shows. A key for which the
/// layout has no such sign counts by its position: Ctrl with the key right of "P" is "Ctrl+[" on a German keyboard, and
/// Ctrl with "С" is "Ctrl+C" on a Russian one. A letter never counts by its position where the layout has Latin letters
/// of its own: on a French keyboard Ctrl+A must not be Ctrl+Q.
std::optional<Command> commandOf(KeyStroke const &stroke);

} // namespace tw
