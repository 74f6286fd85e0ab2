#include "Tarnwick/Commands/ToolBarItem.h"

#include <algorithm>

namespace tw {

namespace {

constexpr ToolBarItem items[] = {
    {"tw.back", "Back", Command::back, "go-previous", "back"},
    {"tw.forward", "Forward", Command::forward, "go-next", "forward"},
    {"tw.connect", "Connect", Command::connect, "network-server", "connect"},
    {"tw.refresh", "Refresh", Command::refresh, "view-refresh", "refresh"},
    {"tw.newFolder", "New Folder", Command::newFolder, "folder-new", "new-folder"},
    {"tw.copy", "Copy", Command::copyFiles, "edit-copy", "copy"},
    {"tw.move", "Move", Command::moveFiles, "", "move"},
    {"tw.rename", "Rename", Command::rename, "edit-rename", "rename"},
    {"tw.delete", "Delete", Command::deleteFiles, "edit-delete", "delete"},
    {"tw.sameFolder", "Same Folder", Command::targetIsSource, "object-flip-horizontal", "same-folder"},
    {"tw.hidden", "Hidden", Command::toggleHidden, "view-reveal", "hidden"},
    {"tw.swap", "Other Pane", Command::otherPane, "view-dual", "other-pane"},
    {space, "Space"},
    {flexibleSpace, "Flexible Space"},
};

} // namespace

std::span<ToolBarItem const> toolBarItems()
{
    return items;
}

ToolBarItem const *toolBarItem(std::string_view identifier)
{
    auto const *const found = std::ranges::find(items, identifier, &ToolBarItem::identifier);
    return found != std::end(items) ? found : nullptr;
}

} // namespace tw
