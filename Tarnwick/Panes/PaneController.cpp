#include "Tarnwick/Panes/PaneController.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Panes/PaneSpec.h"
#include "Tarnwick/Panes/PaneStatus.h"

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
      rows(collaborators.defaults),
      display(&noDisplay),
      requested(PaneSpec::localHome().path)
{
}

PaneController::~PaneController()
{
    spinner.request_stop();
    updateLoop.request_stop();
}

void PaneController::attach(PaneDisplay &newDisplay)
{
    display = &newDisplay;
    display->showSortIndicator(rows.sortKey, rows.ascending);
    showConnection(connection);
    display->showPath(onOneLine(requested));
    display->reloadRows();
    display->showCursor(cursor);
    if (rows.snapshot())
        refreshStatus();
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

std::string_view PaneController::cursorName() const
{
    return cursor ? rows.name(*cursor) : std::string_view();
}

void PaneController::openSelection()
{
    if (!cursor)
        return;
    auto const *const entry = rows.entry(*cursor);
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
    if (rows.sortKey == key) {
        rows.ascending = !rows.ascending;
    } else {
        rows.sortKey = key;
        rows.ascending = key == SortKey::name || key == SortKey::ext;
    }
    display->showSortIndicator(rows.sortKey, rows.ascending);
    reloadPreservingCursor();
}

void PaneController::toggleHidden()
{
    rows.showHidden = !rows.showHidden;
    reloadPreservingCursor();
    refreshStatus();
}

void PaneController::reloadPreservingCursor()
{
    std::string const name(cursorName());
    rows.rebuild();
    display->reloadRows();
    restoreCursor(name);
}

void PaneController::restoreCursor(std::string_view name)
{
    if (rows.rowCount() == 0) {
        setCursor(std::nullopt);
        return;
    }
    auto const row = name.empty() ? std::nullopt : rows.rowForName(name);
    setCursor(row.value_or(0));
    markAnchor = *cursor;
}

void PaneController::setCursor(std::optional<int> row)
{
    if (row && (*row < 0 || *row > lastRow()))
        return;
    cursor = row;
    display->showCursor(cursor);
    prefetchAtCursor();
}

void PaneController::prefetchAtCursor()
{
    auto const *const entry = cursor ? rows.entry(*cursor) : nullptr;
    if (entry && entry->isDirectory())
        spawn({collaborators.mainContext, {}}, browser->prefetch(rows.snapshot()->childPath(*entry)));
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
