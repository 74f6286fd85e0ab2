#include "Tarnwick/Panes/PaneController.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Panes/PaneSpec.h"
#include "Tarnwick/Panes/PaneStatus.h"
#include "Tarnwick/Settings/Settings.h"

namespace tw {

namespace {

/// What a pane shows on when it is attached to no display, so that no call has to ask.
class NoDisplay final : public PaneDisplay {
public:
    void reloadRows() override {}

    void redrawRows() override {}

    void showCursor(std::optional<int> /*row*/) override {}

    int firstVisibleRow() const override { return 0; }

    void scrollToFirstVisibleRow(int /*row*/) override {}

    int wholeVisibleRows() const override { return 1; }

    void showConnection(std::string const & /*name*/) override {}

    void openConnectionMenu(std::vector<ConnectionItem> /*items*/) override {}

    void updateConnectionMenu(std::vector<ConnectionItem> /*items*/) override {}

    void showPath(std::string const & /*path*/) override {}

    void showStatus(std::string const & /*text*/) override {}

    void showSpinner(Spinner /*spinner*/) override {}

    void showSortIndicator(SortKey /*key*/, bool /*ascending*/) override {}

    void showActive(bool /*active*/) override {}

    void takeKeyboardFocus() override {}

    void beep() override {}
};

NoDisplay noDisplay;

std::string_view lastComponent(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

} // namespace

std::shared_ptr<PaneController> PaneController::create(Collaborators collaborators, std::shared_ptr<Browser> browser,
                                                       std::string connectionName)
{
    return std::make_shared<PaneController>(Construction{}, std::move(collaborators), std::move(browser),
                                            std::move(connectionName));
}

PaneController::PaneController(Construction /*unused*/, Collaborators with, std::shared_ptr<Browser> source,
                               std::string connectionName)
    : collaborators(std::move(with)),
      browser(std::move(source)),
      connection(std::move(connectionName)),
      display(&noDisplay),
      requested(PaneSpec::localHome().path),
      heading(browser),
      spinner(collaborators.mainContext, collaborators.clock, [this] { showSpinner(); })
{
    rows.setFolderPlacement(Settings::folderPlacement.read(collaborators.defaults));
    placementObservation = Settings::folderPlacement.observe(collaborators.defaults, [this] {
        changeRows([&] { rows.setFolderPlacement(Settings::folderPlacement.read(collaborators.defaults)); });
    });
}

PaneController::~PaneController()
{
    updateLoop.request_stop();
}

void PaneController::attach(PaneDisplay &newDisplay)
{
    display = &newDisplay;
    showSortIndicator();
    showConnection(connection);
    display->showPath(onOneLine(requested));
    display->reloadRows();
    display->showCursor(cursor.row());
    if (rows.snapshot())
        refreshStatus();
    showSpinner();
    subscribeToRefreshes();
}

void PaneController::detach()
{
    display = &noDisplay;
}

std::string PaneController::pathOnShow() const
{
    return rows.snapshot() ? rows.snapshot()->path() : "/";
}

Operands PaneController::operands() const
{
    return {.browser = browser, .connection = connection, .path = pathOnShow(), .names = rows.operands(cursor.row())};
}

void PaneController::openSelection()
{
    if (!cursor.row())
        return;
    auto const *const entry = rows.entry(*cursor.row());
    if (!entry) {
        goUp();
        return;
    }
    auto path = rows.snapshot()->childPath(*entry);
    // Where a link leads only its host knows; a link to a file then says that it is no directory.
    if (entry->isDirectory() || entry->kind == EntryKind::symlink)
        navigate(std::move(path));
    else if (callbacks.onOpenFile)
        callbacks.onOpenFile(std::move(path));
    else
        display->beep();
}

void PaneController::goUp()
{
    auto parent = rows.parentPath();
    if (parent)
        navigate(*std::move(parent), std::string(lastComponent(pathOnShow())));
}

void PaneController::toggleSort(SortKey key)
{
    adoptViewOptions(rows.viewOptions().sortedBy(key));
}

void PaneController::toggleHidden()
{
    auto options = rows.viewOptions();
    options.showHidden = !options.showHidden;
    adoptViewOptions(options);
}

void PaneController::adoptViewOptions(ViewOptions const &options)
{
    if (options == rows.viewOptions())
        return;
    changeRows([&] { rows.setViewOptions(options); });
    showSortIndicator();
    refreshStatus();
}

void PaneController::changeRows(std::function<void()> const &change)
{
    std::string const name(cursorName());
    change();
    display->reloadRows();
    restoreCursor(name);
}

void PaneController::restoreCursor(std::string_view name)
{
    cursor.restore(name);
    cursorMoved();
}

void PaneController::cursorMoved()
{
    display->showCursor(cursor.row());
    prefetchAtCursor();
}

void PaneController::prefetchAtCursor()
{
    auto const *const entry = cursor.row() ? rows.entry(*cursor.row()) : nullptr;
    if (entry && entry->isDirectory())
        spawn({collaborators.mainContext, {}}, browser->prefetch(rows.snapshot()->childPath(*entry)));
}

void PaneController::showSortIndicator()
{
    auto const &options = rows.viewOptions();
    display->showSortIndicator(options.sortKey, options.ascending);
}

void PaneController::showSpinner()
{
    display->showSpinner(spinner.isSpinning() ? PaneDisplay::Spinner::spinning : PaneDisplay::Spinner::stopped);
}

void PaneController::refreshStatus()
{
    display->showStatus(PaneStatus::summary(rows, lastTiming));
}

void PaneController::showStatus(std::string const &text)
{
    // Names in it are bytes that may hold anything.
    display->showStatus(onOneLine(text));
}

void PaneController::showConnection(std::string const &name)
{
    display->showConnection(withNothingHidden(name));
}

void PaneController::setActive(bool active)
{
    display->showActive(active);
}

void PaneController::takeKeyboardFocus()
{
    display->takeKeyboardFocus();
}

std::string PaneController::describe(std::exception_ptr const &error)
{
    return PaneStatus::describe(error);
}

} // namespace tw
