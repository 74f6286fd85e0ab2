// How a pane gets from one folder to the next, and keeps up with the folder on show.

#include "TWCore/Async/Outcome.h"
#include "Tarnwick/Panes/HostArrival.h"
#include "Tarnwick/Panes/PaneController.h"
#include "Tarnwick/Panes/PaneStatus.h"

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
                              },
                          .onPart =
                              [weak](Navigation const &navigation, DirectorySnapshot part) {
                                  if (auto const self = weak.lock())
                                      self->showPart(navigation, std::move(part));
                              }},
        spinner);
}

void PaneController::navigate(std::string path, std::string select, MarksAfter marks)
{
    wasTouched = false;
    leaveHostArrival();
    startNavigation({.path = std::move(path), .select = std::move(select), .marks = marks});
}

void PaneController::switchTo(std::shared_ptr<Browser> source, std::string connectionName, std::string path,
                              std::string select)
{
    wasTouched = false;
    hostArrival.reset();
    startNavigation({.path = std::move(path),
                     .select = std::move(select),
                     .source = std::move(source),
                     .connection = std::move(connectionName)});
}

void PaneController::startNavigation(Navigation navigation)
{
    if (!navigation.source) {
        navigation.source = browser;
        navigation.connection = connection;
        navigation.archive = archive;
    }
    rememberPlace();
    history.setOutFor(visitOf(navigation.connection, navigation.path, navigation.archive));
    typedWish.clear();
    if (navigation.notice == NoticeAfter::dropped)
        missed.reset();
    isReading = false;
    requested = navigation.path;
    heading = navigation.source;
    headingArchive = navigation.archive;
    showConnection(navigation.connection);
    showRequestedPath();
    wantsReread = false;
    auto const source = navigation.source == browser ? Navigator::Source::known : Navigator::Source::newToThePane;
    navigator->begin(std::move(navigation), source);
    showWaiting();
}

void PaneController::fail(Navigation const &navigation, std::exception_ptr const &failure)
{
    if (hostArrival && hostArrival->isOpeningFolder())
        hostArrival.reset();
    if (callbacks.onPlaceGone && PaneStatus::isAboutThePath(failure))
        callbacks.onPlaceGone({.connection = navigation.connection, .path = navigation.path});
    auto const isLinkToFile = navigation.isOfLink && PaneStatus::isAboutAFile(failure);
    if (navigation.notice == NoticeAfter::kept || (isLinkToFile && callbacks.onOpenFile))
        leavePlace();
    else
        showFailure({.place = navigation.archive ? placeOf(*navigation.archive)
                                                 : PaneSpec{navigation.connection, navigation.path, true},
                     .reason = failure,
                     .retry = [weak = weak_from_this(), navigation] {
                         if (auto const self = weak.lock())
                             self->repeat(navigation);
                     }});
    if (isLinkToFile)
        openFile(navigation.path);
}

/// The strip says why a place was not reached.
void PaneController::showFailure(PaneNotices::Failure what)
{
    notices.fail(std::move(what));
    leavePlace();
    // A person who has just asked for the place reads why it is not there, and Return does what the strip proposes.
    // One who has typed the path corrects it. The keyboard stays with a person who did something else meanwhile.
    auto const typed = std::exchange(typedWish, {});
    if (wasTouched)
        return;
    if (typed.empty())
        display->offerNotice();
    else
        display->returnTyped(typed);
}

void PaneController::repeat(Navigation navigation)
{
    if (navigation.source == browser)
        leaveHostArrival();
    else
        hostArrival.reset();
    startNavigation(std::move(navigation));
}

/// Rows of a long listing, of which more are on their way. The pane goes over to their place as it does on arrival.
void PaneController::showPart(Navigation const &navigation, DirectorySnapshot part)
{
    auto const isOnShow = navigation.source == browser && rows.snapshot() && pathOnShow() == part.path();
    if (isReading) {
        applyRefresh(std::move(part));
        return;
    }
    if (isOnShow)
        return; // rows that are whole stay until the new ones are
    endTyping();
    if (navigation.source != browser) {
        adoptPlace(navigation);
        updateLoop.request_stop(); // the arrival brings the updates of the new connection
    }
    isReading = true;
    deferredRefresh.reset();
    auto const place = places.recall(connection, part.path());
    rows.markAll(PaneModel::Marks::remove);
    rows.setSnapshot(std::move(part));
    display->reloadRows();
    display->scrollToFirstVisibleRow(place.firstVisibleRow);
    restoreCursor(navigation.select.empty() ? place.cursorName : navigation.select);
    refreshStatus();
    history.recordVisit(visitOf(connection, pathOnShow(), archive));
    if (callbacks.onLocationChanged)
        callbacks.onLocationChanged();
}

/// The pane shows again the place that it has. If it has none yet it would be a dead end, and goes where it can.
void PaneController::leavePlace()
{
    auto const wayOut = wayOutOfDeadEnd();
    history.stay();
    if (wayOut && notices.failure())
        missed = notices.failure()->place;
    isReading = false;
    heading = browser;
    headingArchive = archive;
    showConnection(connection);
    if (rows.snapshot()) {
        requested = pathOnShow();
        refreshStatus();
    }
    showRequestedPath();
    showWaiting();
    if (wayOut)
        startNavigation({.path = *wayOut, .notice = NoticeAfter::kept});
}

/// Where to go instead of the place that was not reached. A pane that has shown nothing yet would be a dead end.
std::optional<std::string> PaneController::wayOutOfDeadEnd() const
{
    auto const isHere = heading == browser;
    if (rows.snapshot() || (isHere && requested == "/"))
        return std::nullopt;
    auto home = PaneSpec::localHome().path;
    return isHere && requested == home ? "/" : std::move(home);
}

bool PaneController::giveUp()
{
    auto const isWaiting = navigator->isUnderWay() || (hostArrival && hostArrival->isAwaited());
    if (!isWaiting && !notices.onShow())
        return false;
    notices.clear();
    missed.reset();
    notices.stopWaiting();
    if (!isWaiting) {
        showPath(shownPath); // it is the pane's place from now on
        return true;
    }
    navigator->cancel();
    hostArrival.reset();
    wantsReread = false;
    leavePlace();
    return true;
}

void PaneController::arrive(Navigation const &navigation, Navigator::Arrival arrival)
{
    auto &snapshot = arrival.result.snapshot;
    auto const isSameConnection = navigation.source == browser;
    if (isSameConnection && pathOnShow() == snapshot.path())
        search.end(); // a name that is edited stays under the user's hands
    else
        endTyping();
    auto const wasReading = std::exchange(isReading, false);
    if (arrival.updates)
        adopt(navigation, *std::move(arrival.updates));
    auto const &machine = archive ? archive->outermost().connection : connection;
    auto const provider = machine == localConnection ? PaneStatus::Source::disk : PaneStatus::Source::network;
    lastTiming = PaneStatus::timing(arrival.elapsed, arrival.result.wasCold ? provider : PaneStatus::Source::memory);
    auto const isSameFolder = isSameConnection && rows.snapshot() && rows.snapshot()->path() == snapshot.path();
    auto place = places.recall(connection, snapshot.path());
    if (isSameFolder)
        place.firstVisibleRow = display->firstVisibleRow();
    if (wasReading)
        place.cursorName = cursorName();
    else if (!navigation.select.empty())
        place.cursorName = navigation.select;

    if (isSameFolder && holdsRefreshes) {
        applyRefresh(std::move(snapshot)); // when the name has been edited
    } else {
        if (navigation.marks == MarksAfter::dropped && !wasReading)
            rows.markAll(PaneModel::Marks::remove);
        showListing(std::move(snapshot), place);
    }
    requested = pathOnShow();
    typedWish.clear();
    showRequestedPath();
    startWatching();
    if (isSameFolder && wasTouched)
        refreshStatusAfterReread();
    else
        refreshStatus();
    history.recordVisit(visitOf(connection, requested, archive));
    if (navigation.notice == NoticeAfter::dropped)
        notices.clear();
    tellOfHost();
    showWaiting();
    if (callbacks.onLocationChanged)
        callbacks.onLocationChanged();
}

void PaneController::showListing(DirectorySnapshot snapshot, PlaceMemory::Place const &place)
{
    deferredRefresh.reset();
    rows.setSnapshot(std::move(snapshot));
    rows.unmarkWhatIsNotOnShow();
    display->reloadRows();
    display->scrollToFirstVisibleRow(place.firstVisibleRow);
    restoreCursor(place.cursorName);
}

void PaneController::adopt(Navigation const &navigation, Updates updates)
{
    adoptPlace(navigation);
    listen(listenToUpdates(weak_from_this(), std::move(updates)));
}

void PaneController::rememberPlace()
{
    auto const name = cursorName();
    if (rows.snapshot() && !name.empty())
        places.remember(connection, pathOnShow(), {std::string(name), display->firstVisibleRow()});
}

void PaneController::rereadIfAt(Operands const &where, std::string select)
{
    auto const isOnShow = rows.snapshot() && browser == where.browser && pathOnShow() == where.path;
    if (!isOnShow || heading != browser || requested != where.path)
        return;
    if (select.empty())
        select = cursorName().empty() ? ".." : cursorName();
    navigate(where.path, std::move(select), MarksAfter::kept);
    wasTouched = true; // an operation wants it, not a person who looks at this pane
}

void PaneController::unmarkIfAt(Operands const &where)
{
    if (!rows.snapshot() || browser != where.browser || pathOnShow() != where.path)
        return;
    cursor.unmark(where.names);
    marksChanged();
}

void PaneController::refresh()
{
    if (navigator->isRereading()) {
        wantsReread = true; // one runs, and one follows it however often the key repeats
        return;
    }
    auto const name = cursorName();
    wasTouched = false;
    leaveHostArrival();
    startNavigation({.path = rows.snapshot() ? pathOnShow() : requested,
                     .select = name.empty() ? ".." : std::string(name),
                     .marks = MarksAfter::kept,
                     .isReread = true});
}

bool PaneController::restsOnListing() const
{
    return rows.snapshot() && heading == browser && !navigator->isUnderWay() && !hostArrival;
}

void PaneController::revalidate()
{
    if (connection == localConnection || archive || !restsOnListing())
        return;
    refresh();
    wasTouched = true; // nobody has asked for it, so nobody is to be led to the strip
}

/// A navigation that began meanwhile is no refresh any more.
void PaneController::followUpRefresh()
{
    if (std::exchange(wantsReread, false))
        refresh();
}

} // namespace tw
