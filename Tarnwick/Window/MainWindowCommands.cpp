#include "Tarnwick/Window/MainWindowCommands.h"

#include "Tarnwick/Operations/OperationTable.h"
#include "Tarnwick/Window/MainWindowController.h"

namespace tw {

std::optional<CommandState> MainWindowCommands::stateOf(Command command) const
{
    switch (command) {
    case Command::closeWindow:
    case Command::refresh:
    case Command::otherPane:
    case Command::equalizePanes:
    case Command::connect:
        return CommandState{};
    case Command::back:
        return CommandState{.isEnabled = window.activePane().canGoBack()};
    case Command::forward:
        return CommandState{.isEnabled = window.activePane().canGoForward()};
    case Command::toggleHidden:
        return CommandState{.isChecked = window.activePane().model().viewOptions().showHidden};
    default:
        return operationOf(command) ? std::optional(CommandState{}) : std::nullopt;
    }
}

void MainWindowCommands::perform(Command command)
{
    switch (command) {
    case Command::closeWindow:
        return window.cmdCloseWindow();
    case Command::refresh:
        return window.cmdRefresh();
    case Command::back:
        return window.cmdBack();
    case Command::forward:
        return window.cmdForward();
    case Command::toggleHidden:
        return window.cmdToggleHidden();
    case Command::otherPane:
        return window.cmdSwapPanes();
    case Command::equalizePanes:
        return window.cmdEqualizePanes();
    case Command::connect:
        return window.cmdConnect();
    default:
        return window.start(operationOf(command));
    }
}

} // namespace tw
