// A viewer on the file under the cursor of the active pane.

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
    if (!entry || !fileToView || !window)
        return pane.refuse();
    if (!mayBeAFile(entry->kind))
        return pane.showStatus(PaneStatus::warning(ViewerWords::notAFile(entry->kind)));
    auto reader = std::dynamic_pointer_cast<FileSystemReader>(pane.browserOnShow()->providerRef());
    if (!reader)
        return pane.showStatus(PaneStatus::warning({"%@ cannot be read", {pane.connectionName()}}));
    auto const path = pane.model().snapshot()->childPath(*entry);
    window->openViewer(std::make_shared<ViewerController>(collaborators.mainContext,
                                                          ViewerSubject{.file = fileToView(std::move(reader), path),
                                                                        .decode = decodePicture,
                                                                        .label = pane.connectionName(),
                                                                        .path = path,
                                                                        .kind = entry->kind,
                                                                        .size = entry->size}));
}

} // namespace tw
