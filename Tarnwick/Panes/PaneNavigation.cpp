// How a pane gets from one folder to the next, on this machine or on a host, and keeps up with it.

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Provider/CommandHost.h"
#include "Tarnwick/Panes/PaneController.h"
#include "Tarnwick/Panes/PaneSpec.h"
#include "Tarnwick/Panes/PaneStatus.h"
#include "Tarnwick/Panes/TypedPath.h"

namespace tw {

void PaneController::navigate(std::string path, std::string select, MarksAfter marks)
{
    startNavigation({.path = std::move(path), .select = std::move(select), .marks = marks, .notice = {}});
}

void PaneController::goToTyped(std::string text)
{
    auto const host = std::dynamic_pointer_cast<CommandHost>(browser->providerRef());
    if (host && trimmed(text).starts_with('~')) {
        spawn({collaborators.mainContext, {}}, performTyped(weak_from_this(), host, std::move(text), navigationToken));
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
    if (!self || self->navigationToken != token)
        co_return; // the user is elsewhere
    if (home.failure)
        self->showStatus(PaneStatus::warning(text + ": " + describe(home.failure)));
    else if (auto where = typedPath(text, self->pathOnShow(), *home.value))
        self->navigate(*std::move(where));
}

void PaneController::startNavigation(Navigation navigation)
{
    navigation.token = ++navigationToken;
    hostOnItsWay = navigation.isRemembered ? HostOnItsWay::aheadOfTheFolder : HostOnItsWay::no;
    if (!navigation.source) {
        navigation.source = browser;
        navigation.connection = connection;
    }
    rememberPlace();
    requested = navigation.path;
    heading = navigation.source;
    showConnection(navigation.connection);
    display->showPath(onOneLine(requested));

    // One that takes the place of a slow one leaves the spinner as it is.
    awaited = spinner.isSpinning() ? spinner.beginLong() : spinner.begin();
    spawn({collaborators.mainContext, {}}, performNavigation(weak_from_this(), std::move(navigation)));
}

Task<void> PaneController::performNavigation(std::weak_ptr<PaneController> weak, Navigation navigation)
{
    auto self = weak.lock();
    if (!self)
        co_return;
    auto const source = navigation.source;
    auto const clock = self->collaborators.clock;
    auto const isSwitch = source != self->browser;
    self.reset(); // a pane that is closed meanwhile is not kept alive by its own question

    // Before the open: what it has read again behind its answer may be there before the pane is.
    std::optional<Updates> updates;
    if (isSwitch) {
        auto stream = co_await source->updates();
        updates.emplace(std::move(stream));
    }
    auto const started = clock->steadyNow();
    OpenResult result;
    std::exception_ptr failure;
    try {
        auto opening = navigation.isReread ? source->reread(navigation.path) : source->open(navigation.path);
        result = co_await std::move(opening);
    } catch (...) {
        failure = std::current_exception();
    }
    auto const elapsed = clock->steadyNow() - started;

    self = weak.lock();
    if (!self || self->navigationToken != navigation.token)
        co_return; // the user is elsewhere; the spinner is the newer navigation's
    if (failure || self->hostOnItsWay == HostOnItsWay::no)
        self->awaited.reset();
    auto const refreshesAgain = navigation.isReread && self->wantsReread;
    self->rereading.reset();
    if (failure)
        self->fail(navigation, failure);
    else
        self->arrive(navigation, std::move(result), std::move(updates), elapsed);
    if (refreshesAgain && self->navigationToken == navigation.token)
        self->refresh();
}

void PaneController::fail(Navigation const &navigation, std::exception_ptr const &failure)
{
    auto const text = PaneStatus::warning(navigation.path + ": " + describe(failure));
    showConnection(connection);
    heading = browser;
    if (rows.snapshot()) {
        requested = pathOnShow();
        display->showPath(onOneLine(requested));
    }
    showStatus(text);
    // A pane that has shown nothing yet would be a dead end: it goes where it can, and keeps saying why.
    if (!rows.snapshot() && navigation.path != "/") {
        auto const home = PaneSpec::localHome().path;
        startNavigation({.path = navigation.path == home ? "/" : home,
                         .select = {},
                         .notice = navigation.notice.empty() ? text : navigation.notice});
    }
}

void PaneController::stayWithNotice(std::string const &notice)
{
    if (rows.snapshot())
        showStatus(notice);
    else
        startNavigation({.path = PaneSpec::localHome().path, .select = {}, .notice = notice});
}

void PaneController::arrive(Navigation const &navigation, OpenResult result, std::optional<Updates> updates,
                            std::chrono::duration<double> elapsed)
{
    lastTiming =
        PaneStatus::timing(elapsed, result.wasCold ? PaneStatus::Source::provider : PaneStatus::Source::memory);
    auto const isSameConnection = navigation.source == browser;
    if (!isSameConnection && updates)
        adopt(navigation, *std::move(updates));
    auto const isSameFolder = isSameConnection && rows.snapshot() && rows.snapshot()->path() == result.snapshot.path();
    auto const place = places.recall(result.snapshot.path());
    auto const firstRow = isSameFolder ? display->firstVisibleRow() : place.firstVisibleRow;

    if (navigation.marks == MarksAfter::dropped)
        rows.markAll(PaneModel::Marks::remove);
    rows.setSnapshot(std::move(result.snapshot));
    rows.unmarkWhatIsNotOnShow();

    display->reloadRows();
    requested = pathOnShow();
    display->showPath(onOneLine(requested));
    display->scrollToFirstVisibleRow(firstRow);
    restoreCursor(navigation.select.empty() ? place.cursorName : navigation.select);
    refreshStatus();
    auto const &notice = navigation.isRemembered ? hostNotice : navigation.notice;
    if (!notice.empty())
        showStatus(notice);
    if (hostOnItsWay == HostOnItsWay::aheadOfTheFolder)
        hostOnItsWay = HostOnItsWay::behindTheFolder;
    if (callbacks.onLocationChanged)
        callbacks.onLocationChanged();
}

void PaneController::adopt(Navigation const &navigation, Updates updates)
{
    browser = navigation.source;
    connection = navigation.connection;
    places.clear();
    updateLoop.request_stop();
    updateLoop = std::stop_source();
    spawn({collaborators.mainContext, updateLoop.get_token()}, listenToUpdates(weak_from_this(), std::move(updates)));
}

void PaneController::rememberPlace()
{
    auto const name = cursorName();
    if (rows.snapshot() && !name.empty())
        places.remember(pathOnShow(), {std::string(name), display->firstVisibleRow()});
}

void PaneController::showConnecting(std::string const &host)
{
    ++navigationToken;
    hostOnItsWay = HostOnItsWay::no; // the folder of the one before does not arrive any more
    rememberPlace();
    heading.reset();
    showConnection(host);
    display->showPath("connecting…");
    showStatus({});
    awaited = spinner.beginLong();
}

void PaneController::showConnectFailed(std::string const &host, std::exception_ptr const &error)
{
    auto const text = PaneStatus::connectFailed(host, error);
    if (std::exchange(hostOnItsWay, HostOnItsWay::no) == HostOnItsWay::aheadOfTheFolder) {
        hostNotice = text; // the folder that is remembered of it arrives all the same
        return;
    }
    awaited.reset();
    heading = browser;
    requested = pathOnShow();
    showConnection(connection);
    display->showPath(onOneLine(requested));
    stayWithNotice(text);
}

void PaneController::switchTo(std::shared_ptr<Browser> source, std::string connectionName, std::string path)
{
    startNavigation({.path = std::move(path),
                     .select = {},
                     .notice = {},
                     .source = std::move(source),
                     .connection = std::move(connectionName)});
}

void PaneController::switchToRemembered(std::shared_ptr<Browser> source, std::string connectionName, std::string path)
{
    hostNotice = PaneStatus::connecting(connectionName);
    startNavigation({.path = std::move(path),
                     .select = {},
                     .notice = {},
                     .isRemembered = true,
                     .source = std::move(source),
                     .connection = std::move(connectionName)});
}

void PaneController::showConnected()
{
    hostNotice.clear();
    if (std::exchange(hostOnItsWay, HostOnItsWay::no) != HostOnItsWay::behindTheFolder)
        return; // the folder is still to arrive, and will look as any other
    awaited.reset();
    refreshStatus();
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
    if (rereading && rereading == navigationToken) {
        wantsReread = true; // one runs, and one follows it however often the key repeats
        return;
    }
    auto const name = cursorName();
    startNavigation({.path = rows.snapshot() ? pathOnShow() : requested,
                     .select = name.empty() ? ".." : std::string(name),
                     .marks = MarksAfter::kept,
                     .notice = {},
                     .isReread = true});
    rereading = navigationToken;
    wantsReread = false;
}

void PaneController::subscribeToRefreshes()
{
    updateLoop.request_stop();
    updateLoop = std::stop_source();
    spawn({collaborators.mainContext, updateLoop.get_token()}, subscribe(weak_from_this(), browser));
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
    std::string const name(cursorName());
    auto const firstRow = display->firstVisibleRow();
    rows.setSnapshot(std::move(snapshot));
    display->reloadRows();
    restoreCursor(name);
    display->scrollToFirstVisibleRow(firstRow);
    refreshStatus();
}

} // namespace tw
