#include "Tarnwick/Panes/PaneController.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/WindowsPath.h"
#include "TWCore/Provider/CommandHost.h"
#include "Tarnwick/Panes/HostArrival.h"
#include "Tarnwick/Panes/PaneStatus.h"
#include "Tarnwick/Settings/Settings.h"

namespace tw {

namespace {

std::string_view lastComponent(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

} // namespace

std::shared_ptr<PaneController> PaneController::create(Collaborators collaborators, std::shared_ptr<Browser> browser,
                                                       std::string connectionName)
{
    auto pane = std::make_shared<PaneController>(Construction{}, std::move(collaborators), std::move(browser),
                                                 std::move(connectionName));
    pane->makeNavigator();
    pane->makeWatcher();
    pane->listen(subscribe(pane, pane->browser));
    return pane;
}

PaneController::PaneController(Construction /*unused*/, Collaborators with, std::shared_ptr<Browser> source,
                               std::string connectionName)
    : collaborators(std::move(with)),
      browser(std::move(source)),
      connection(std::move(connectionName)),
      requested(PaneSpec::localHome().path),
      spinner(collaborators.mainContext, collaborators.clock, [this] { showWaiting(); }),
      heading(browser),
      notices(collaborators.mainContext, collaborators.clock, [this] { showNotice(); }),
      search({collaborators.mainContext, collaborators.clock, collaborators.workers}, rows, cursor, searchEvents()),
      pendingRename(collaborators.mainContext, collaborators.clock, [this] { beginScheduledRename(); }),
      shownPath(requested),
      shownConnection(connection)
{
    auto const &placement = Settings::folderPlacement;
    rows.setFolderPlacement(placement.read(collaborators.defaults));
    placementObservation = placement.observe(collaborators.defaults, [this] {
        changeRows([&] { rows.setFolderPlacement(placement.read(collaborators.defaults)); });
    });
}

PaneController::~PaneController()
{
    updateLoop.request_stop();
    completing.request_stop();
}

void PaneController::attach(PaneDisplay &newDisplay)
{
    auto const firstRow = display->firstVisibleRow();
    display = &newDisplay;
    showSortIndicator();
    display->showConnection(titleOfConnection());
    display->showPath(shownPath);
    display->showActive(isActive);
    display->reloadRows();
    display->showCursor(cursor.row());
    display->scrollToFirstVisibleRow(firstRow); // it may have been scrolled away from the cursor
    display->showStatus(status);
    showWaiting();
    showNotice();
}

void PaneController::detach(PaneDisplay const &oldDisplay)
{
    if (display != &oldDisplay)
        return;
    endTyping();
    hidden.scrollToFirstVisibleRow(display->firstVisibleRow());
    display = &hidden;
}

std::string PaneController::pathOnShow() const
{
    return rows.snapshot() ? rows.snapshot()->path() : "/";
}

PaneSpec PaneController::place() const
{
    if (hostArrival && hostArrival->stage() == HostArrival::Stage::connecting)
        return hostArrival->destination();
    return missed ? *missed : PaneSpec{.connection = shownConnection, .path = requested, .pathWasExplicit = true};
}

Operands PaneController::operands()
{
    search.settle();
    return {.browser = browser,
            .connection = connection,
            .path = pathOnShow(),
            .names = rows.operands(cursor.row()),
            .archive = archive};
}

bool PaneController::hasAllRows()
{
    if (!isReading)
        return true;
    display->beep();
    showStatus(PaneStatus::warning("this folder is still being read"));
    return false;
}

void PaneController::openSelection()
{
    search.settle();
    if (!cursor.row())
        return;
    auto const *const entry = rows.entry(*cursor.row());
    if (!entry) {
        goUp();
        return;
    }
    auto path = rows.snapshot()->childPath(*entry);
    // Where a link leads only its host knows; a link to a file is opened when the host has said so.
    auto const isLink = entry->kind == EntryKind::symlink;
    if (!entry->isDirectory() && !isLink) {
        openFile(std::move(path));
        return;
    }
    wasTouched = false;
    leaveHostArrival();
    startNavigation({.path = std::move(path), .isOfLink = isLink});
}

void PaneController::openFile(std::string path)
{
    if (enterArchive(path))
        return;
    if (callbacks.onOpenFile)
        callbacks.onOpenFile(std::move(path));
    else
        display->beep();
}

void PaneController::goUp()
{
    if (archive && pathOnShow() == "/") {
        leaveArchive();
        return;
    }
    auto parent = rows.parentPath();
    if (parent)
        navigate(*std::move(parent), std::string(lastComponent(pathOnShow())));
}

void PaneController::goBack()
{
    replay(history.goBack());
}

void PaneController::goForward()
{
    replay(history.goForward());
}

void PaneController::goToVisit(PaneHistory::Visit const &visit)
{
    history.goTo(visit);
    replay(visit);
}

void PaneController::replay(std::optional<PaneHistory::Visit> const &visit)
{
    if (!visit)
        display->beep();
    else if (visit->connection == connection)
        navigate(visit->path);
    else if (!visit->archive.path.empty())
        replayArchive(*visit);
    else if (archive && visit->connection == archive->outermost().connection)
        switchTo(archive->outermost().holder, visit->connection, visit->path);
    else if (connections)
        open({visit->connection, visit->path, true}, *connections);
}

void PaneController::toggleSort(SortKey key)
{
    adoptViewOptions(rows.viewOptions().sortedBy(key));
    if (callbacks.onViewOptionsChanged)
        callbacks.onViewOptionsChanged();
}

void PaneController::toggleHidden()
{
    auto options = rows.viewOptions();
    options.showHidden = !options.showHidden;
    adoptViewOptions(options);
    if (callbacks.onViewOptionsChanged)
        callbacks.onViewOptionsChanged();
}

void PaneController::adoptViewOptions(ViewOptions const &options)
{
    if (options == rows.viewOptions())
        return;
    endRename(NameEnd::committed); // the field stands at a row
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
    if (callbacks.onCursorMoved && rows.snapshot() && !missed)
        callbacks.onCursorMoved(cursorName().empty() ? std::nullopt : std::optional<std::string>(cursorName()));
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

/// The spinner turns while the pane waits for anything; the strip has words if it waits for a host.
void PaneController::showWaiting()
{
    auto const awaitsHost = hostArrival && hostArrival->isAwaited();
    auto const isWaiting = spinner.isSpinning() || awaitsHost;
    display->showSpinner(isWaiting ? PaneDisplay::Spinner::spinning : PaneDisplay::Spinner::stopped);
    if (awaitsHost && hostArrival->browser())
        notices.waitFor(hostArrival->host(), hostArrival->browser()->providerRef());
    else if (navigator->isUnderWay() && heading && spinner.isSpinning())
        notices.waitFor(shownConnection, heading->providerRef());
    else if (spinner.isSpinning())
        notices.waitFor(connection, browser->providerRef()); // an operation does
    else
        notices.stopWaiting();
}

PaneSpinner::Work PaneController::beginChange(std::shared_ptr<Browser> const &place) const
{
    auto host = place->host();
    if (!host)
        return spinner.begin();

    struct Change {
        PaneSpinner::Work turning;
        std::stop_source probing = {};

        ~Change() { probing.request_stop(); }
    };

    auto const change = std::make_shared<Change>(spinner.begin());
    spawn({collaborators.mainContext, change->probing.get_token()}, probe(std::move(host), collaborators.clock));
    return change;
}

/// A change may take long without a word from the host, so that it is no sign of a dead one. An answer to something
/// small is one of a live one, and its absence is noticed as with any question of a person.
Task<void> PaneController::probe(std::shared_ptr<CommandHost> host, std::shared_ptr<Clock> clock)
{
    for (;;) {
        co_await clock->sleep(std::chrono::seconds(1));
        co_await outcomeOf(host->runCommand({.text = ":"}));
    }
}

void PaneController::showNotice()
{
    display->showNotice(notices.onShow());
}

void PaneController::showPath(Text path)
{
    shownPath = std::move(path);
    display->showPath(shownPath);
    if (callbacks.onPlaceShown)
        callbacks.onPlaceShown();
}

void PaneController::showRequestedPath()
{
    // A host may be one with drives. A folder of this machine whose name looks like a drive is none.
    showPath(shownConnection == localConnection ? requested : WindowsPath::display(requested));
}

void PaneController::showConnection(std::string name)
{
    shownConnection = std::move(name);
    display->showConnection(titleOfConnection());
}

void PaneController::refreshStatus()
{
    showStatus(isReading ? PaneStatus::partSummary(rows) : PaneStatus::summary(rows, lastTiming, secondsOfWatching()));
    showsSummary = true;
}

/// The words of an operation stay, since the operation itself has the folder read again.
void PaneController::refreshStatusAfterReread()
{
    if (!showsOutcome)
        refreshStatus();
}

void PaneController::showOutcome(Text text)
{
    showStatus(std::move(text));
    showsOutcome = true;
}

void PaneController::showStatus(Text text)
{
    showsOutcome = false;
    showsSummary = false;
    status = std::move(text);
    display->showStatus(status);
}

void PaneController::showCut(std::shared_ptr<CutFiles const> files)
{
    if (cut == files)
        return;
    cut = std::move(files);
    applyCut();
    display->redrawRows();
}

void PaneController::applyCut()
{
    rows.setCut(cut && cut->connection == connection ? cut : nullptr);
}

void PaneController::setActive(bool active)
{
    isActive = active;
    display->showActive(isActive);
}

void PaneController::takeKeyboardFocus()
{
    display->takeKeyboardFocus();
}

} // namespace tw
