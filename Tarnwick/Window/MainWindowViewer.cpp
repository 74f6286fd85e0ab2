// Viewers on files of the panes.

#include "Tarnwick/Panes/PaneStatus.h"
#include "Tarnwick/Viewer/ViewerWords.h"
#include "Tarnwick/Window/MainWindowController.h"

namespace tw {

namespace {

Entry const *entryUnderCursor(PaneController const &pane)
{
    auto const row = pane.cursorRow();
    auto const *const entry = row ? pane.model().entry(*row) : nullptr;
    return entry && !entry->isDirectory() ? entry : nullptr;
}

bool mayBeAFile(EntryKind kind)
{
    return kind == EntryKind::file || kind == EntryKind::symlink || kind == EntryKind::unknown;
}

} // namespace

bool MainWindowController::canView() const
{
    return fileToView && entryUnderCursor(activePane());
}

void MainWindowController::cmdView()
{
    auto &pane = activePane();
    auto const *const entry = entryUnderCursor(pane);
    if (!entry)
        return pane.refuse();
    auto const path = pane.model().snapshot()->childPath(*entry);
    view(pane, pane.operands(), {.path = path, .kind = entry->kind, .size = entry->size});
}

void MainWindowController::view(PaneController &pane, Operands const &where, FileToOpen const &file) const
{
    if (!fileToView || !window)
        return pane.refuse();
    if (!mayBeAFile(file.kind))
        return pane.showStatus(PaneStatus::warning(ViewerWords::notAFile(file.kind)));
    auto reader = std::dynamic_pointer_cast<FileSystemReader>(where.browser->providerRef());
    if (!reader)
        return pane.showStatus(PaneStatus::warning({"%@ cannot be read", {where.connection}}));
    window->openViewer(std::make_shared<ViewerController>(
        collaborators.mainContext, ViewerSubject{.file = fileToView(std::move(reader), file.path),
                                                 .decode = decodePicture,
                                                 .label = where.connection,
                                                 .path = file.path,
                                                 .kind = file.kind,
                                                 .size = file.size}));
}

} // namespace tw
