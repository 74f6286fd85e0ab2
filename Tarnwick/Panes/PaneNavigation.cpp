// How a pane gets from one folder to the next, on this machine or on a host, and keeps up with it.

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Provider/CommandHost.h"
#include "Tarnwick/Panes/HostArrival.h"
#include "Tarnwick/Panes/PaneController.h"
#include "Tarnwick/Panes/PaneStatus.h"
#include "Tarnwick/Panes/TypedPath.h"

namespace tw {

void PaneController::makeNavigator()
{
    auto const weak = weak_from_this();
    navigator = std::make_shared<Navigator>(
        collaborators.mainContext, collaborators.clock,
        Navigator::Events{.onArrived =
                              [weak](Navigation const &navigation, Navigator::Arrival arrival) {
                                  auto const self = weak.lock();
                                  if (!self)
                                      return;
                                  self->arrive(navigation, std::move(arrival));
                                  self->followUpRefresh();
                              },
                          .onFailed =
                              [weak](Navigation const &navigation, std::exception_ptr const &failure) {
                                  auto const self = weak.lock();
                                  if (!self)
                                      return;
                                  self->fail(navigation, failure);
                                  self->followUpRefresh();
                              }},
        spinner);
}

void PaneController::navigate(std::string path, std::string select, MarksAfter marks)
{
    leaveHostArrival();
    startNavigation({.path = std::move(path), .select = std::move(select), .marks = marks});
}

void PaneController::switchTo(std::shared_ptr<Browser> source, std::string connectionName, std::string path)
{
    hostArrival.reset();
    startNavigation({.path = std::move(path), .source = std::move(source), .connection = std::move(connectionName)});
}

void PaneController::open(PaneSpec destination, Connections &connections)
{
    if (destination.connection == localConnection) {
        switchTo(connections.local(), localConnection, std::move(destination.path));
        return;
    }
    auto const weak = weak_from_this();
    navigator->cancel();
    rememberPlace();
    hostArrival = std::make_shared<HostArrival>(
        std::move(destination), HostArrival::Events{.onFolder =
                                                        [weak](std::shared_ptr<Browser> source, std::string path) {
                                                            if (auto const self = weak.lock())
                                                                self->goToFolderOfHost(std::move(source),
                                                                                       std::move(path));
                                                        },
                                                    .onEnd =
                                                        [weak] {
                                                            if (auto const self = weak.lock())
                                                                self->endHostArrival();
                                                        }});
    heading.reset();
    showConnection(hostArrival->host());
    showPath("connecting…");
    showStatus({});
    showSpinner();
    hostArrival->begin(collaborators.mainContext, connections);
}

/// The user goes elsewhere on the connection that the pane has.
void PaneController::leaveHostArrival()
{
    if (hostArrival && connection == hostArrival->host())
        hostArrival->userWentOn();
    else
        hostArrival.reset();
}

void PaneController::goToFolderOfHost(std::shared_ptr<Browser> source, std::string path)
{
    auto const host = hostArrival->host();
    if (!hostArrival->isOpeningFolder())
        hostArrival.reset(); // the host is up, and this folder is as any other
    startNavigation({.path = std::move(path), .source = std::move(source), .connection = host});
}

/// The host has been reached, or not.
void PaneController::endHostArrival()
{
    if (hostArrival->isOpeningFolder())
        return; // the folder that arrives tells of it
    auto const arrival = std::exchange(hostArrival, nullptr);
    showSpinner();
    if (arrival->failure())
        tellOfFailedHost(*arrival);
    else if (arrival->stage() == HostArrival::Stage::onFolder)
        refreshStatus();
}

void PaneController::tellOfFailedHost(HostArrival const &arrival)
{
    auto const text = PaneStatus::connectFailed(arrival.host(), arrival.failure());
    if (arrival.stage() != HostArrival::Stage::connecting) {
        showStatus(text);
        return;
    }
    showPlaceOnShow();
    if (rows.snapshot())
        showStatus(text);
    else
        startNavigation({.path = PaneSpec::localHome().path, .notice = text});
}

/// A folder is on show; if it is a remembered one, the status line tells of its host.
void PaneController::tellOfHost()
{
    if (!hostArrival || !hostArrival->isOpeningFolder())
        return;
    hostArrival->folderArrived();
    if (hostArrival->isOver())
        endHostArrival();
    else
        showStatus(PaneStatus::connecting(hostArrival->host()));
}

void PaneController::goToTyped(std::string text)
{
    auto const host = std::dynamic_pointer_cast<CommandHost>(browser->providerRef());
    if (host && trimmed(text).starts_with('~')) {
        spawn({collaborators.mainContext, {}},
              performTyped(weak_from_this(), host, std::move(text), navigator->token()));
        return;
    }
    if (auto where = typedPath(text, pathOnShow(), PaneSpec::localHome().path))
        navigate(*std::move(where));
}

/// Only the host knows where its home folder is.
Task<void> PaneController::performTyped(std::weak_ptr<PaneController> weak, std::shared_ptr<CommandHost> host,
                                        std::string text, std::uint64_t token)
{
    auto const home = co_await outcomeOf(host->defaultDirectory());
    auto const self = weak.lock();
    if (!self || self->navigator->token() != token)
        co_return; // the user is elsewhere
    if (home.failure)
        self->showStatus(PaneStatus::failure(text, home.failure));
    else if (auto where = typedPath(text, self->pathOnShow(), *home.value))
        self->navigate(*std::move(where));
}

void PaneController::startNavigation(Navigation navigation)
{
    if (!navigation.source) {
        navigation.source = browser;
        navigation.connection = connection;
    }
    rememberPlace();
    requested = navigation.path;
    heading = navigation.source;
    showConnection(navigation.connection);
    showPath(requested);
    wantsReread = false;
    auto const source = navigation.source == browser ? Navigator::Source::known : Navigator::Source::newToThePane;
    navigator->begin(std::move(navigation), source);
    showSpinner();
}

void PaneController::fail(Navigation const &navigation, std::exception_ptr const &failure)
{
    if (hostArrival && hostArrival->isOpeningFolder())
        hostArrival.reset();
    showSpinner();
    showPlaceOnShow();
    auto const text = PaneStatus::failure(navigation.path, failure);
    showStatus(text);
    if (navigation.isOfLink && PaneStatus::isAboutAFile(failure)) {
        openFile(navigation.path);
        return;
    }
    // A pane that has shown nothing yet would be a dead end: it goes where it can, and keeps saying why.
    if (!rows.snapshot() && navigation.path != "/") {
        auto const home = PaneSpec::localHome().path;
        startNavigation({.path = navigation.path == home ? "/" : home,
                         .notice = navigation.notice.isEmpty() ? text : navigation.notice});
    }
}

/// Takes back what was shown of a place that the pane does not get to.
void PaneController::showPlaceOnShow()
{
    heading = browser;
    showConnection(connection);
    if (rows.snapshot())
        requested = pathOnShow();
    showPath(requested);
}

void PaneController::arrive(Navigation const &navigation, Navigator::Arrival arrival)
{
    auto &snapshot = arrival.result.snapshot;
    auto const isSameConnection = navigation.source == browser;
    if (!isSameConnection && arrival.updates)
        adopt(navigation, *std::move(arrival.updates));
    auto const provider = connection == localConnection ? PaneStatus::Source::disk : PaneStatus::Source::network;
    lastTiming = PaneStatus::timing(arrival.elapsed, arrival.result.wasCold ? provider : PaneStatus::Source::memory);
    auto const isSameFolder = isSameConnection && rows.snapshot() && rows.snapshot()->path() == snapshot.path();
    auto const place = places.recall(snapshot.path());
    auto const firstRow = isSameFolder ? display->firstVisibleRow() : place.firstVisibleRow;

    if (navigation.marks == MarksAfter::dropped)
        rows.markAll(PaneModel::Marks::remove);
    rows.setSnapshot(std::move(snapshot));
    rows.unmarkWhatIsNotOnShow();

    display->reloadRows();
    requested = pathOnShow();
    showPath(requested);
    display->scrollToFirstVisibleRow(firstRow);
    restoreCursor(navigation.select.empty() ? place.cursorName : navigation.select);
    refreshStatus();
    if (!navigation.notice.isEmpty())
        showStatus(navigation.notice);
    tellOfHost();
    showSpinner();
    if (callbacks.onLocationChanged)
        callbacks.onLocationChanged();
}

void PaneController::adopt(Navigation const &navigation, Updates updates)
{
    browser = navigation.source;
    connection = navigation.connection;
    places.clear();
    listen(listenToUpdates(weak_from_this(), std::move(updates)));
}

void PaneController::rememberPlace()
{
    auto const name = cursorName();
    if (rows.snapshot() && !name.empty())
        places.remember(pathOnShow(), {std::string(name), display->firstVisibleRow()});
}

void PaneController::rereadIfAt(Operands const &where, std::string select)
{
    auto const isOnShow = rows.snapshot() && browser == where.browser && pathOnShow() == where.path;
    if (!isOnShow || heading != browser || requested != where.path)
        return;
    if (select.empty())
        select = cursorName().empty() ? ".." : cursorName();
    navigate(where.path, std::move(select), MarksAfter::kept);
}

void PaneController::refresh()
{
    if (navigator->isRereading()) {
        wantsReread = true; // one runs, and one follows it however often the key repeats
        return;
    }
    auto const name = cursorName();
    leaveHostArrival();
    startNavigation({.path = rows.snapshot() ? pathOnShow() : requested,
                     .select = name.empty() ? ".." : std::string(name),
                     .marks = MarksAfter::kept,
                     .isReread = true});
}

/// A navigation that began meanwhile is no refresh any more.
void PaneController::followUpRefresh()
{
    if (std::exchange(wantsReread, false))
        refresh();
}

void PaneController::listen(Task<void> loop)
{
    updateLoop.request_stop();
    updateLoop = std::stop_source();
    spawn({collaborators.mainContext, updateLoop.get_token()}, std::move(loop));
}

Task<void> PaneController::subscribe(std::weak_ptr<PaneController> weak, std::shared_ptr<Browser> source)
{
    auto stream = co_await source->updates();
    source.reset();
    co_await listenToUpdates(weak, std::move(stream));
}

Task<void> PaneController::listenToUpdates(std::weak_ptr<PaneController> weak, Updates stream)
{
    auto const context = co_await currentContext();
    for (;;) {
        auto snapshot = co_await stream.next();
        auto const self = weak.lock();
        // One that was on its way when the pane went over to another connection is a folder of the one before.
        if (!self || !snapshot || context.stop.stop_requested())
            co_return;
        if (snapshot->path() == self->pathOnShow())
            self->applyRefresh(*std::move(snapshot));
    }
}

void PaneController::applyRefresh(DirectorySnapshot snapshot)
{
    auto const firstRow = display->firstVisibleRow();
    changeRows([&] { rows.setSnapshot(std::move(snapshot)); });
    display->scrollToFirstVisibleRow(firstRow);
    refreshStatus();
}

} // namespace tw
