#include "Tarnwick/Commands/CommandTable.h"

#include "TWCore/Check.h"

#include <algorithm>

namespace tw {

namespace {

constexpr CommandKeys paneKeys(std::string_view words)
{
    return {.main = words, .owner = KeyOwner::pane};
}

// In the order of the items within a menu, and of the lists of keys.
constexpr CommandRow table[] = {
    {.command = Command::moveCursor,
     .keys = paneKeys("Up, Down, Home, End, Page Up, Page Down"),
     .help = "move the cursor; with Shift they mark on the way"},
    {.command = Command::openSelection,
     .keys = paneKeys("Return"),
     .help = "open the folder under the cursor; on .. go up",
     .firstSteps = FirstSteps::yes},
    {.command = Command::goUp,
     .keys = paneKeys("Backspace"),
     .help = "go up; the cursor stands on the folder that you left",
     .firstSteps = FirstSteps::yes},
    {.command = Command::toggleMark,
     .keys = paneKeys("Insert, Shift+Space"),
     .help = "mark or unmark, and go one down",
     .firstSteps = FirstSteps::yes},
    {.command = Command::invertMarks, .keys = paneKeys("* of the keypad"), .help = "turn all marks round"},
    {.command = Command::clearMarks,
     .keys = paneKeys("Escape"),
     .help = "give up what the pane waits for; close the message above the rows; unmark all"},
    {.command = Command::connect,
     .title = "Connect…",
     .place = {Menu::hosts, 0},
     .keys = {.main = "Ctrl+K"},
     .help = "choose what the pane is connected to: this computer, or a host",
     .toolTip = "Connect this pane to another host",
     .firstSteps = FirstSteps::yes},
    {.command = Command::refresh,
     .title = "Refresh",
     .place = {Menu::file, 0},
     .keys = {.main = "Ctrl+R"},
     .help = "read the folder again",
     .toolTip = "Re-read this folder",
     .repeat = KeyRepeat::repeats,
     .contextMenu = ContextMenu::yes,
     .firstSteps = FirstSteps::yes},
    {.command = Command::newFolder,
     .title = "New Folder",
     .place = {Menu::commands, 0},
     .keys = {.main = "F7"},
     .help = "create a folder",
     .toolTip = "New folder",
     .buttonTitle = "NewDir",
     .contextMenu = ContextMenu::yes,
     .firstSteps = FirstSteps::yes},
    {.command = Command::back,
     .title = "Back",
     .place = {Menu::view, 1},
     .keys = {.main = "Ctrl+[", .additional = "Alt+Left"},
     .help = "go back to the folder before",
     .toolTip = "Back",
     .repeat = KeyRepeat::repeats},
    {.command = Command::forward,
     .title = "Forward",
     .place = {Menu::view, 1},
     .keys = {.main = "Ctrl+]", .additional = "Alt+Right"},
     .help = "go forward again",
     .toolTip = "Forward",
     .repeat = KeyRepeat::repeats},
    {.command = Command::toggleHidden,
     .title = "Show Hidden Files",
     .place = {Menu::view, 0},
     // Where Shift makes another sign of the full stop, the chord is known by that sign.
     .keys = {.main = "Ctrl+Shift+.", .additional = "Ctrl+Shift+>"},
     .help = "show or hide files whose name begins with a dot",
     .toolTip = "Show hidden files",
     .contextMenu = ContextMenu::yes,
     .checkMark = CheckMark::followsState},
    {.command = Command::otherPane,
     .title = "Other Pane",
     .place = {Menu::view, 0},
     .keys = paneKeys("Tab"),
     .help = "go to the other pane",
     .toolTip = "Switch panes",
     .firstSteps = FirstSteps::yes},
    {.command = Command::equalizePanes,
     .title = "Equalize Panes",
     .place = {Menu::view, 0},
     .keys = {.main = "Ctrl+\\"},
     .help = "make the panes equally wide"},
    {.command = Command::closeWindow,
     .title = "Close Window",
     .place = {Menu::file, 1},
     .keys = {.main = "Ctrl+W"},
     .help = "close the window, and with the last one quit"},
    {.command = Command::showAbout,
     .title = "About Tarnwick",
     .place = {Menu::application, 0},
     .keys = {.main = "F1"},
     .help = "what this program is",
     .scope = CommandScope::anywhere},
    {.command = Command::quit,
     .title = "Quit Tarnwick",
     .place = {Menu::application, 1},
     .keys = {.main = "Ctrl+Q"},
     .help = "quit",
     .scope = CommandScope::anywhere},
};

} // namespace

std::string_view titleOf(Menu menu)
{
    switch (menu) {
    case Menu::none:
        return {};
    case Menu::application:
        return "Tarnwick";
    case Menu::file:
        return "File";
    case Menu::view:
        return "View";
    case Menu::hosts:
        return "Hosts";
    case Menu::commands:
        return "Commands";
    }
    return {};
}

std::span<CommandRow const> commandTable()
{
    return table;
}

CommandRow const &rowOf(Command command)
{
    auto const *const row = std::ranges::find(table, command, &CommandRow::command);
    check(row != std::end(table), "a command has no row");
    return *row;
}

} // namespace tw
