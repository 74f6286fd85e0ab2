// The tabs of the active side.

#include "Tarnwick/Window/MainWindowController.h"

namespace tw {

void MainWindowController::cmdNewTab()
{
    container(active).duplicateCurrentTab();
}

void MainWindowController::cmdCloseTab()
{
    auto &tabs = container(active);
    if (tabs.tabCount() > 1)
        tabs.closeTab(tabs.activeIndex());
    else if (window)
        window->closeWindow();
}

void MainWindowController::cmdCloseOtherTabs()
{
    container(active).closeOthers(container(active).activeIndex());
}

void MainWindowController::cmdNextTab()
{
    container(active).selectNext();
}

void MainWindowController::cmdPreviousTab()
{
    container(active).selectPrevious();
}

void MainWindowController::selectTabByNumber(int number)
{
    container(active).select(static_cast<std::size_t>(number - 1));
}

} // namespace tw
