#pragma once

#include "Tarnwick/Commands/Command.h"

#include <array>
#include <string_view>

namespace tw {

/// The menus of the menu bar, and the one that is a part of another.
enum class Menu { none, application, file, view, sortBy, edit, mark, hosts, commands, window };

/// The menus that stand in the menu bar, in their order.
inline constexpr std::array menuBar{Menu::application, Menu::file,  Menu::view,     Menu::edit,
                                    Menu::mark,        Menu::hosts, Menu::commands, Menu::window};

inline constexpr std::array submenus{Menu::sortBy};

/// The menu at whose end a submenu stands; none for those of the menu bar.
Menu menuAbove(Menu menu);

/// The title of a menu, which is its translation key too.
std::string_view titleOf(Menu menu);

/// Where a command stands in the menu bar: in the order of the table, with a separator where the group changes.
struct MenuPlace {
    Menu menu = Menu::none;
    int group = 0;
};

/// Where a command can be given.
enum class CommandScope {
    mainWindow,
    viewer,
    anywhere, ///< in every window, since it is about the program
};

/// Who acts on a command's key.
enum class KeyOwner {
    shortcut, ///< the window, whatever has the keyboard in it
    pane,     ///< a pane that has the keyboard, by the position of the key; a text field keeps the key for itself
};

/// The keys of a command. A shortcut is spelled as `spelled` spells a chord: "Ctrl+Shift+.", "F7".
struct CommandKeys {
    std::string_view main;            ///< shown beside the command; of a pane's key, words for the reader
    std::string_view additional = {}; ///< for where the desktop, or another command on some layouts, has the main one
    KeyOwner owner = KeyOwner::shortcut;
};

/// How a command may be started by a key that is held down.
enum class KeyRepeat { ignored, repeats };

/// Whether the first window of a new user names a command.
enum class FirstSteps { no, yes };

/// What a state of its own means to a command's menu item.
enum class CheckMark { none, followsState };

/// All that is to be said about one command. Every text is English as given, and its own translation key.
struct CommandRow {
    Command command;
    std::string_view title = {}; ///< in menus; empty for a key that only a pane knows
    MenuPlace place = {};        ///< none: the command has its key, or is in the menu over a pane
    CommandKeys keys = {};
    std::string_view help = {}; ///< what its key does, in lists of keys
    std::string_view toolTip = {};
    std::string_view buttonTitle = {}; ///< in the row of function keys; empty: it is not there
    CommandScope scope = CommandScope::mainWindow;
    KeyRepeat repeat = KeyRepeat::ignored;
    FirstSteps firstSteps = FirstSteps::no;
    CheckMark checkMark = CheckMark::none;
};

} // namespace tw
