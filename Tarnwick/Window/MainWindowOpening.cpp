// How the window opens files with programs.

#include "Tarnwick/Window/MainWindowController.h"

namespace tw {

namespace {

/// A file of the folder on show. Nothing for a folder, and for a path that is not there any more.
std::optional<FileToOpen> fileAt(PaneController const &pane, std::string const &path)
{
    auto const &rows = pane.model();
    auto const row = rows.rowForName(path.substr(path.rfind('/') + 1));
    auto const *const entry = row ? rows.entry(*row) : nullptr;
    if (!entry || entry->isDirectory() || rows.snapshot()->childPath(*entry) != path)
        return std::nullopt;
    return FileToOpen{
        .path = path, .kind = entry->kind, .size = entry->size, .mtime = entry->mtime, .mode = entry->mode};
}

Task<void> passOn(Task<std::vector<Application>> asking, std::function<void(std::vector<Application>)> found)
{
    auto applications = co_await std::move(asking);
    found(std::move(applications));
}

} // namespace

void MainWindowController::openFile(std::shared_ptr<PaneController> const &of, std::string const &path)
{
    auto const file = fileAt(*of, path);
    if (window && file)
        spawn({collaborators.mainContext, {}}, openWithSystem(contextOf(of), *file));
}

std::optional<FileToOpen> MainWindowController::fileAtCursor() const
{
    auto const &rows = activePane();
    auto const name = rows.cursorName();
    if (name.empty() || !services.opening.applications)
        return std::nullopt;
    auto const folder = rows.pathOnShow();
    return fileAt(rows, (folder == "/" ? folder : folder + '/') + std::string(name));
}

void MainWindowController::cmdOpenWith()
{
    auto const file = fileAtCursor();
    if (window && file)
        spawn({collaborators.mainContext, {}}, chooseApplication(contextOf(pane(active)), *file));
}

void MainWindowController::openAtCursorWith(std::string application)
{
    auto const file = fileAtCursor();
    if (window && file)
        spawn({collaborators.mainContext, {}}, openWithSystem(contextOf(pane(active)), *file, std::move(application)));
}

void MainWindowController::listApplicationsAtCursor(std::function<void(std::vector<Application>)> found) const
{
    if (auto const file = fileAtCursor())
        spawn({collaborators.mainContext, {}},
              passOn(applicationsFor(services.opening, activePane().connectionName(), *file), std::move(found)));
}

} // namespace tw
