// Viewers on files of the panes.

#include "Tarnwick/Format/Fmt.h"
#include "Tarnwick/Panes/PaneStatus.h"
#include "Tarnwick/Table/IconKind.h"
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

/// What viewers on the files of one pane are made with.
struct Viewing {
    std::weak_ptr<PaneController> pane;
    std::weak_ptr<Browser> browser;
    std::shared_ptr<FileSystemReader> place;
    std::string folder; ///< without a slash at its end
    MainWindowController::FileToView open;
    PictureReading::Decode decode;
    std::string label;
};

ViewerSubject subjectOf(std::shared_ptr<Viewing const> const &viewing, FileToOpen const &file);

bool isImage(PaneModel const &rows, int row)
{
    auto const *const entry = rows.entry(row);
    return entry && mayBeAFile(entry->kind) &&
           iconKindOf(Fmt::iconKey(rows.name(row), EntryKind::file)) == IconKind::image;
}

/// As the pane shows the folder now, if it still shows it.
std::optional<ViewerSubject> neighbourOf(std::shared_ptr<Viewing const> const &viewing, std::string const &name,
                                         Neighbour which)
{
    auto const pane = viewing->pane.lock();
    auto const browser = viewing->browser.lock();
    if (!pane || !browser || pane->browserOnShow() != browser)
        return std::nullopt;
    auto const &rows = pane->model();
    auto const row = rows.rowForName(name);
    if (!row || rows.snapshot()->childPath(*rows.entry(*row)) != viewing->folder + '/' + name)
        return std::nullopt;
    auto const step = which == Neighbour::next ? 1 : -1;
    for (auto each = *row + step; each >= 0 && each < rows.rowCount(); each += step) {
        if (!isImage(rows, each))
            continue;
        auto const &entry = *rows.entry(each);
        return subjectOf(viewing, {.path = rows.snapshot()->childPath(entry), .kind = entry.kind, .size = entry.size});
    }
    return std::nullopt;
}

ViewerSubject subjectOf(std::shared_ptr<Viewing const> const &viewing, FileToOpen const &file)
{
    return {.file = viewing->open(viewing->place, file.path),
            .decode = viewing->decode,
            .label = viewing->label,
            .path = file.path,
            .kind = file.kind,
            .size = file.size,
            .neighbour = [viewing, name = file.path.substr(file.path.rfind('/') + 1)](Neighbour which) {
                return neighbourOf(viewing, name, which);
            }};
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
    auto const viewing = std::make_shared<Viewing const>(Viewing{.pane = pane.weak_from_this(),
                                                                 .browser = where.browser,
                                                                 .place = std::move(reader),
                                                                 .folder = file.path.substr(0, file.path.rfind('/')),
                                                                 .open = fileToView,
                                                                 .decode = decodePicture,
                                                                 .label = where.connection});
    window->openViewer(std::make_shared<ViewerController>(collaborators.mainContext, subjectOf(viewing, file)));
}

} // namespace tw
