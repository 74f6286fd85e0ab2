#include "Tarnwick/Commands/CommandTable.h"

#include "TWCore/Check.h"

#include <algorithm>

namespace tw {

namespace {

constexpr CommandKeys paneKeys(std::string_view words)
{
    return {.main = words, .owner = KeyOwner::pane};
}

constexpr CommandRow sortRow(Command command, std::string_view title, CommandKeys keys, std::string_view help)
{
    return {.command = command,
            .title = title,
            .place = {Menu::sortBy, 0},
            .keys = keys,
            .help = help,
            .checkMark = CheckMark::followsState};
}

constexpr CommandRow tabRow(Command command, std::string_view title, std::string_view key, std::string_view help)
{
    return {.command = command, .title = title, .keys = {.main = key}, .help = help};
}

// In the order of the items within a menu, and of the lists of keys.
constexpr CommandRow table[] = {
    {.command = Command::moveCursor,
     .keys = paneKeys("Up, Down, Home, End, Page Up, Page Down"),
     .help = "move the cursor; with Shift they mark on the way"},
    {.command = Command::openSelection,
     .title = "Open",
     .keys = paneKeys("Return"),
     .help = "open the folder or the file under the cursor; on .. go up",
     .firstSteps = FirstSteps::yes},
    {.command = Command::goUp,
     .keys = paneKeys("Backspace"),
     .help = "go up; the cursor stands on the folder that you left",
     .firstSteps = FirstSteps::yes},
    {.command = Command::findByTyping,
     .keys = paneKeys("Letters, digits, signs"),
     .help = "find the name that begins with them, or else contains them",
     .firstSteps = FirstSteps::yes},
    {.command = Command::toggleMark,
     .keys = paneKeys("Insert, Shift+Space"),
     .help = "mark or unmark, and go one down",
     .firstSteps = FirstSteps::yes},
    {.command = Command::clipboardCut,
     .title = "Cut",
     .place = {Menu::edit, 0},
     .keys = {.main = "Ctrl+X"},
     .help = "cut files: they are moved to where they are pasted, here or in another program"},
    {.command = Command::clipboardCopy,
     .title = "Copy",
     .place = {Menu::edit, 0},
     .keys = {.main = "Ctrl+C"},
     .help = "copy files to the clipboard"},
    {.command = Command::clipboardPaste,
     .title = "Paste",
     .place = {Menu::edit, 0},
     .keys = {.main = "Ctrl+V"},
     .help = "paste files into the folder; a file is made of a text or an image"},
    {.command = Command::markAll,
     .title = "Select All",
     .place = {Menu::mark, 0},
     .keys = {.main = "Ctrl+A"},
     .help = "mark all"},
    {.command = Command::unmarkAll,
     .title = "Unselect All",
     .place = {Menu::mark, 0},
     .keys = {.main = "Ctrl+Shift+A"},
     .help = "unmark all"},
    {.command = Command::invertMarks,
     .title = "Invert Selection",
     .place = {Menu::mark, 0},
     .keys = paneKeys("* of the keypad"),
     .help = "turn all marks round"},
    {.command = Command::markByMask,
     .title = "Select by Mask…",
     .place = {Menu::mark, 1},
     .keys = paneKeys("+ of the keypad"),
     .help = "mark the names that wildcards match"},
    {.command = Command::unmarkByMask,
     .title = "Unselect by Mask…",
     .place = {Menu::mark, 1},
     .keys = paneKeys("- of the keypad"),
     .help = "unmark the names that wildcards match"},
    {.command = Command::clearMarks,
     .keys = paneKeys("Escape"),
     .help = "end a search by typing; give up what the pane waits for; close the message above the rows; unmark all"},
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
     .firstSteps = FirstSteps::yes},
    {.command = Command::openWith, .title = "Open With…", .place = {Menu::file, 0}},
    {.command = Command::targetIsSource,
     .title = "Target = Source",
     .place = {Menu::file, 0},
     .keys = {.main = "Ctrl+Shift+="},
     .help = "show this folder in the other pane too",
     .toolTip = "Open this folder in the other pane"},
    {.command = Command::rename,
     .title = "Rename",
     .place = {Menu::commands, 0},
     .keys = {.main = "F2"},
     .help = "change the name under the cursor",
     .toolTip = "Rename"},
    {.command = Command::view,
     .title = "View",
     .place = {Menu::commands, 0},
     .keys = {.main = "F3"},
     .help = "look into the file, of any size, here or on a host",
     .toolTip = "View",
     .buttonTitle = "View",
     .firstSteps = FirstSteps::yes},
    {.command = Command::edit,
     .title = "Edit",
     .place = {Menu::commands, 0},
     .keys = {.main = "F4"},
     .help = "edit the file under the cursor with any program; each save goes to where the file lies",
     .toolTip = "Edit",
     .buttonTitle = "Edit",
     .firstSteps = FirstSteps::yes},
    {.command = Command::copyFiles,
     .title = "Copy",
     .place = {Menu::commands, 0},
     .keys = {.main = "F5"},
     .help = "copy to the folder in the other pane, or to another one",
     .toolTip = "Copy to the other pane",
     .buttonTitle = "Copy",
     .firstSteps = FirstSteps::yes},
    {.command = Command::moveFiles,
     .title = "Move",
     .place = {Menu::commands, 0},
     .keys = {.main = "F6"},
     .help = "move to the folder in the other pane, or to another one",
     .toolTip = "Move to the other pane",
     .buttonTitle = "Move",
     .firstSteps = FirstSteps::yes},
    {.command = Command::newFolder,
     .title = "New Folder",
     .place = {Menu::commands, 0},
     .keys = {.main = "F7"},
     .help = "create a folder",
     .toolTip = "New folder",
     .buttonTitle = "NewDir",
     .firstSteps = FirstSteps::yes},
    {.command = Command::deleteFiles,
     .title = "Delete",
     .place = {Menu::commands, 0},
     .keys = {.main = "F8"},
     .help = "move to the Trash, or delete on a host, after a question; so do Delete and Ctrl+Backspace",
     .toolTip = "Delete",
     .buttonTitle = "Delete",
     .firstSteps = FirstSteps::yes},
    {.command = Command::packFiles,
     .title = "Pack…",
     .place = {Menu::commands, 0},
     .keys = {.main = "Alt+F5", .additional = "Alt+Shift+F5"},
     .help = "pack files into an archive in the other pane's folder"},
    {.command = Command::unpackFile,
     .title = "Unpack",
     .place = {Menu::commands, 0},
     .keys = {.main = "Alt+F9", .additional = "Alt+Shift+F9"},
     .help = "unpack the archive under the cursor into a new folder in the other pane"},
    {.command = Command::preview,
     .title = "Preview",
     .place = {Menu::commands, 0},
     .keys = {.main = "Ctrl+Y"},
     .help = "show what is in the file under the cursor over the other pane, or close that; so does Space",
     .firstSteps = FirstSteps::yes},
    {.command = Command::toggleEditInTerminal,
     .title = "Edit in Terminal",
     .place = {Menu::commands, 1},
     .checkMark = CheckMark::followsState},
    // Where the plus is typed with Shift on the key of the equals sign, its chord is that of "Target = Source".
    {.command = Command::textBigger,
     .title = "Bigger Text",
     .place = {Menu::view, 0},
     .keys = {.main = "Ctrl++", .additional = "Ctrl+="},
     .help = "larger rows",
     .repeat = KeyRepeat::repeats},
    {.command = Command::textSmaller,
     .title = "Smaller Text",
     .place = {Menu::view, 0},
     .keys = {.main = "Ctrl+-"},
     .help = "smaller rows",
     .repeat = KeyRepeat::repeats},
    {.command = Command::textActualSize,
     .title = "Actual Size",
     .place = {Menu::view, 0},
     .keys = {.main = "Ctrl+0"},
     .help = "rows of the usual size"},
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
    {.command = Command::editPath,
     .title = "Edit Path",
     .place = {Menu::view, 1},
     .keys = {.main = "Ctrl+L"},
     .help = "type the path of another folder; Tab completes it"},
    {.command = Command::toggleAutoRefresh,
     .title = "Auto Refresh",
     .place = {Menu::view, 2},
     .keys = {.main = "Ctrl+Alt+R"},
     .help = "folders on show refresh themselves, or do not",
     .checkMark = CheckMark::followsState},
    {.command = Command::toggleHidden,
     .title = "Show Hidden Files",
     .place = {Menu::view, 2},
     .keys = {.main = "Ctrl+Shift+."},
     .help = "show or hide files whose name begins with a dot",
     .toolTip = "Show hidden files",
     .checkMark = CheckMark::followsState},
    {.command = Command::otherPane,
     .title = "Other Pane",
     .place = {Menu::view, 2},
     .keys = paneKeys("Tab"),
     .help = "go to the other pane",
     .toolTip = "Switch panes",
     .firstSteps = FirstSteps::yes},
    {.command = Command::equalizePanes,
     .title = "Equalize Panes",
     .place = {Menu::view, 2},
     .keys = {.main = "Ctrl+\\"},
     .help = "make the panes equally wide"},
    sortRow(Command::sortByName, "Name", {.main = "Ctrl+F3", .additional = "Ctrl+Alt+1"}, "sort by name"),
    sortRow(Command::sortByExtension, "Extension", {.main = "Ctrl+F4", .additional = "Ctrl+Alt+2"},
            "sort by extension"),
    sortRow(Command::sortByDate, "Date", {.main = "Ctrl+F5", .additional = "Ctrl+Alt+3"}, "sort by date"),
    sortRow(Command::sortBySize, "Size", {.main = "Ctrl+F6", .additional = "Ctrl+Alt+4"}, "sort by size"),
    {.command = Command::copyName, .title = "Name"},
    {.command = Command::copyNameWithoutExtension, .title = "Name Without Extension"},
    {.command = Command::copyFullPath, .title = "Full Path"},
    {.command = Command::copyHostAndPath, .title = "Host and Path"},
    {.command = Command::copyRelativePath, .title = "Relative to Other Pane"},
    {.command = Command::copyHomePath, .title = "Relative to Home"},
    {.command = Command::copyEnclosingFolder, .title = "Enclosing Folder"},
    {.command = Command::contextMenu,
     .keys = {.main = "Shift+F10"},
     .help = "what can be done with the file under the cursor, or with the folder; so does the Menu key"},
    {.command = Command::openMenuBar,
     .keys = {.main = "F10"},
     .help = "open the menu bar; so does Alt with the underlined letter of a menu"},
    {.command = Command::newTab,
     .title = "New Tab",
     .place = {Menu::file, 1},
     .keys = {.main = "Ctrl+T"},
     .help = "show this folder in a new tab"},
    {.command = Command::closeTab,
     .title = "Close Tab",
     .place = {Menu::file, 1},
     .keys = {.main = "Ctrl+W"},
     .help = "close the tab; the only tab of a side closes the window, and with the last one quits"},
    {.command = Command::closeOtherTabs, .title = "Close Other Tabs", .place = {Menu::file, 1}},
    {.command = Command::nextTab,
     .title = "Next Tab",
     .place = {Menu::view, 2},
     .keys = {.main = "Ctrl+Tab", .additional = "Ctrl+PgDown"},
     .help = "go to the next tab of this side",
     .repeat = KeyRepeat::repeats},
    {.command = Command::previousTab,
     .title = "Previous Tab",
     .place = {Menu::view, 2},
     .keys = {.main = "Ctrl+Shift+Tab", .additional = "Ctrl+PgUp"},
     .help = "go to the tab before",
     .repeat = KeyRepeat::repeats},
    {.command = Command::tab1,
     .title = "Tab 1",
     .place = {Menu::view, 2},
     .keys = {.main = "Ctrl+1"},
     .help = "go to the first tab"},
    tabRow(Command::tab2, "Tab 2", "Ctrl+2", "go to the second tab"),
    tabRow(Command::tab3, "Tab 3", "Ctrl+3", "go to the third tab"),
    tabRow(Command::tab4, "Tab 4", "Ctrl+4", "go to the fourth tab"),
    tabRow(Command::tab5, "Tab 5", "Ctrl+5", "go to the fifth tab"),
    tabRow(Command::tab6, "Tab 6", "Ctrl+6", "go to the sixth tab"),
    tabRow(Command::tab7, "Tab 7", "Ctrl+7", "go to the seventh tab"),
    tabRow(Command::tab8, "Tab 8", "Ctrl+8", "go to the eighth tab"),
    tabRow(Command::tab9, "Tab 9", "Ctrl+9", "go to the ninth tab"),
    {.command = Command::backgroundWork,
     .title = "Background Work",
     .place = {Menu::window, 0},
     .keys = {.main = "Ctrl+J"},
     .help = "go to the work in the background: arrows choose a button, Return presses it, Escape goes back"},
    {.command = Command::customizeToolBar, .title = "Customize Toolbar…", .place = {Menu::view, 3}},
    {.command = Command::customizeColumns, .title = "Customize Columns…", .place = {Menu::view, 3}},
    {.command = Command::minimizeWindow,
     .title = "Minimize",
     .place = {Menu::window, 0},
     .keys = {.main = "Ctrl+M"},
     .help = "put the window out of the way"},
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

Menu menuAbove(Menu menu)
{
    return menu == Menu::sortBy ? Menu::view : Menu::none;
}

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
    case Menu::sortBy:
        return "Sort By";
    case Menu::edit:
        return "Edit";
    case Menu::mark:
        return "Mark";
    case Menu::hosts:
        return "Hosts";
    case Menu::commands:
        return "Commands";
    case Menu::window:
        return "Window";
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
