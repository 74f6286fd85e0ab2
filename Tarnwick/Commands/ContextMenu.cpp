#include "Tarnwick/Commands/ContextMenu.h"

namespace tw {

namespace {

void addEntryItems(std::vector<ContextItem> &items, ContextSubject const &subject)
{
    if (subject.row == ContextSubject::Row::folder) {
        items.push_back({.command = Command::openSelection, .title = "Open Folder"});
        items.push_back({.kind = ContextItem::Kind::separator});
    } else {
        items.push_back({.command = Command::openSelection});
        items.push_back({.kind = ContextItem::Kind::openWithMenu,
                         .command = Command::openWith,
                         .title = std::string(openWithMenuTitle)});
        items.push_back({.command = Command::view});
        items.push_back({.kind = ContextItem::Kind::separator});
    }
    items.push_back({.command = Command::clipboardCut});
    items.push_back({.command = Command::clipboardCopy, .title = "Copy to Clipboard"}); // "Copy" is the menu of paths
    items.push_back({.command = Command::copyFiles, .title = "Copy to Other Pane…"});
    items.push_back({.command = Command::moveFiles, .title = "Move to Other Pane…"});
    items.push_back({.command = Command::rename, .title = "Rename…"});
    items.push_back({.command = Command::packFiles});
    if (subject.row == ContextSubject::Row::file)
        items.push_back({.command = Command::unpackFile});
    for (auto const command :
         {Command::copyName, Command::copyNameWithoutExtension, Command::copyFullPath,
          subject.isLocal ? Command::copyRelativePath : Command::copyHostAndPath,
          subject.isLocal ? Command::copyHomePath : Command::copyRelativePath, Command::copyEnclosingFolder})
        items.push_back({.kind = ContextItem::Kind::inCopyMenu, .command = command});
    items.push_back(
        {.command = Command::deleteFiles,
         .title = subject.marked > 0 ? "Delete " + std::to_string(subject.marked) + " Marked…" : "Delete…"});
    items.push_back({.kind = ContextItem::Kind::separator});
}

} // namespace

std::vector<ContextItem> contextMenuItems(ContextSubject const &subject)
{
    std::vector<ContextItem> items;
    if (subject.row != ContextSubject::Row::none)
        addEntryItems(items, subject);
    items.push_back({.command = Command::clipboardPaste});
    items.push_back({.command = Command::newFolder, .title = "New Folder…"});
    items.push_back({.command = Command::refresh});
    items.push_back({.command = Command::toggleHidden});
    return items;
}

} // namespace tw
