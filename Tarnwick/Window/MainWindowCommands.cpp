#include "Tarnwick/Window/MainWindowCommands.h"

#include "Tarnwick/Operations/CopiedPath.h"
#include "Tarnwick/Operations/OperationTable.h"
#include "Tarnwick/Window/MainWindowController.h"

namespace tw {

namespace {

std::optional<SortKey> sortKeyOf(Command command)
{
    switch (command) {
    case Command::sortByName:
        return SortKey::name;
    case Command::sortByExtension:
        return SortKey::ext;
    case Command::sortByDate:
        return SortKey::date;
    case Command::sortBySize:
        return SortKey::size;
    default:
        return std::nullopt;
    }
}

std::optional<int> numberOfTab(Command command)
{
    if (command < Command::tab1 || command > Command::tab9)
        return std::nullopt;
    return static_cast<int>(command) - static_cast<int>(Command::tab1) + 1;
}

} // namespace

std::optional<CommandState> MainWindowCommands::stateOf(Command command) const
{
    switch (command) {
    case Command::newTab:
    case Command::closeTab:
    case Command::closeOtherTabs:
    case Command::nextTab:
    case Command::previousTab:
    case Command::minimizeWindow:
    case Command::customizeToolBar:
    case Command::customizeColumns:
    case Command::openSelection:
    case Command::refresh:
    case Command::targetIsSource:
    case Command::textBigger:
    case Command::textSmaller:
    case Command::textActualSize:
    case Command::editPath:
    case Command::otherPane:
    case Command::equalizePanes:
    case Command::connect:
    case Command::markAll:
    case Command::unmarkAll:
    case Command::invertMarks:
    case Command::rename:
    case Command::clipboardPaste:
        return CommandState{};
    case Command::backgroundWork:
        return CommandState{.isEnabled = window.hasBackgroundWork()};
    case Command::openWith:
        return CommandState{.isEnabled = window.fileAtCursor().has_value()};
    case Command::edit:
        return CommandState{.isEnabled = window.canEdit()};
    case Command::back:
        return CommandState{.isEnabled = window.activePane().canGoBack()};
    case Command::forward:
        return CommandState{.isEnabled = window.activePane().canGoForward()};
    case Command::clipboardCut:
    case Command::clipboardCopy:
    case Command::copyFiles:
    case Command::moveFiles:
    case Command::packFiles:
    case Command::deleteFiles:
        return CommandState{.isEnabled = window.activePane().hasOperands()};
    case Command::view:
        return CommandState{.isEnabled = window.canView()};
    case Command::preview:
        return CommandState{.isEnabled = window.canPreview()};
    case Command::toggleAutoRefresh:
        return CommandState{.isChecked = window.refreshesItself()};
    case Command::toggleEditInTerminal:
        return CommandState{.isEnabled = window.canEdit(), .isChecked = window.editsInTerminal()};
    case Command::toggleHidden:
        return CommandState{.isChecked = window.activePane().model().viewOptions().showHidden};
    default:
        break;
    }
    auto const &view = window.activePane().model().viewOptions();
    if (auto const key = sortKeyOf(command))
        return CommandState{.isChecked = view.sortKey == *key};
    auto const isKnown = numberOfTab(command) || CopiedPath::styleOf(command) || operationOf(command);
    return isKnown ? std::optional(CommandState{}) : std::nullopt;
}

void MainWindowCommands::perform(Command command)
{
    switch (command) {
    case Command::newTab:
        return window.cmdNewTab();
    case Command::closeTab:
        return window.cmdCloseTab();
    case Command::closeOtherTabs:
        return window.cmdCloseOtherTabs();
    case Command::nextTab:
        return window.cmdNextTab();
    case Command::previousTab:
        return window.cmdPreviousTab();
    case Command::minimizeWindow:
        return window.cmdMinimizeWindow();
    case Command::customizeToolBar:
        return window.cmdCustomizeToolBar();
    case Command::backgroundWork:
        return window.cmdBackgroundWork();
    case Command::customizeColumns:
        return window.cmdCustomizeColumns();
    case Command::openSelection:
        return window.activePane().openSelection();
    case Command::openWith:
        return window.cmdOpenWith();
    case Command::edit:
        return window.cmdEdit();
    case Command::refresh:
        return window.cmdRefresh();
    case Command::back:
        return window.cmdBack();
    case Command::forward:
        return window.cmdForward();
    case Command::targetIsSource:
        return window.cmdTargetIsSource();
    case Command::textBigger:
        return window.cmdChangeTextSize(1);
    case Command::textSmaller:
        return window.cmdChangeTextSize(-1);
    case Command::textActualSize:
        return window.cmdUsualTextSize();
    case Command::editPath:
        return window.cmdEditPath();
    case Command::toggleAutoRefresh:
        return window.cmdToggleAutoRefresh();
    case Command::toggleEditInTerminal:
        return window.cmdToggleEditInTerminal();
    case Command::toggleHidden:
        return window.cmdToggleHidden();
    case Command::otherPane:
        return window.cmdSwapPanes();
    case Command::equalizePanes:
        return window.cmdEqualizePanes();
    case Command::connect:
        return window.cmdConnect();
    case Command::markAll:
        return window.cmdMarkAll();
    case Command::unmarkAll:
        return window.cmdUnmarkAll();
    case Command::invertMarks:
        return window.cmdInvertMarks();
    case Command::rename:
        return window.cmdRename();
    case Command::view:
        return window.cmdView();
    case Command::preview:
        return window.cmdPreview();
    case Command::clipboardCut:
        return window.cmdClipboardCut();
    case Command::clipboardCopy:
        return window.cmdClipboardCopy();
    case Command::clipboardPaste:
        return window.cmdClipboardPaste();
    default:
        break;
    }
    if (auto const key = sortKeyOf(command))
        window.activePane().toggleSort(*key);
    else if (auto const number = numberOfTab(command))
        window.selectTabByNumber(*number);
    else if (auto const style = CopiedPath::styleOf(command))
        window.copyPaths(*style);
    else
        window.start(operationOf(command));
}

} // namespace tw
