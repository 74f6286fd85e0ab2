// How the window opens files with programs.

#include "Tarnwick/Operations/EditFile.h"
#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Window/MainWindowController.h"

#include <algorithm>

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

void MainWindowController::cmdEdit()
{
    auto const file = fileAtCursor();
    if (!file)
        return activePane().refuse();
    if (window)
        spawn({collaborators.mainContext, {}}, editFile(contextOf(pane(active)), *file));
}

bool MainWindowController::editsInTerminal() const
{
    return Settings::editor.read(collaborators.defaults) == EditorChoice::terminal;
}

void MainWindowController::cmdToggleEditInTerminal()
{
    auto const isWanted = !editsInTerminal();
    Settings::editor.write(collaborators.defaults, isWanted ? EditorChoice::terminal : EditorChoice::application);
    activePane().showStatus(isWanted ? "F4 opens $VISUAL or $EDITOR in a terminal"
                                     : "F4 opens the application of the desktop");
}

/// So that the new size and time are seen.
void MainWindowController::rereadAfterUploads()
{
    if (!edits())
        return;
    edits()->onUploaded = [this](std::shared_ptr<Browser> const &host, std::string const &path) {
        auto const folder = path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
        for (auto const &each : containers) {
            for (auto const &one : each->panes())
                one->rereadIfAt({.browser = host, .connection = {}, .path = folder, .names = {}}, {});
        }
    };
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
