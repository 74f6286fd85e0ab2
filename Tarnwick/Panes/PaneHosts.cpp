// How a pane gets to a host, and what it offers when it does not.

#include "Tarnwick/Panes/HostArrival.h"
#include "Tarnwick/Panes/PaneController.h"
#include "Tarnwick/Panes/PaneStatus.h"

namespace tw {

void PaneController::open(PaneSpec destination, Connections &of)
{
    connections = &of;
    if (destination.connection == localConnection)
        switchTo(of.local(), localConnection, std::move(destination.path), std::move(destination.cursor));
    else
        setOut(std::move(destination), HostLogin::silent);
}

void PaneController::setOut(PaneSpec destination, HostLogin login)
{
    auto const onPane = [weak = weak_from_this()](auto const &act) {
        if (auto const self = weak.lock())
            act(*self);
    };
    navigator->cancel();
    rememberPlace();
    missed.reset();
    // The earlier arrival ends behind the beginning of the new one: a host that is chosen twice is reached once.
    auto const before = std::move(hostArrival);
    hostArrival = std::make_shared<HostArrival>(
        std::move(destination),
        HostArrival::Events{.onKnown = [onPane] { onPane([](PaneController &pane) { pane.showWaiting(); }); },
                            .onFolder =
                                [onPane](std::shared_ptr<Browser> const &source, std::string const &path) {
                                    onPane([&](PaneController &pane) { pane.goToFolderOfHost(source, path); });
                                },
                            .onEnd = [onPane] { onPane([](PaneController &pane) { pane.endHostArrival(); }); }});
    heading.reset();
    headingArchive.reset();
    typedWish.clear();
    showConnection(hostArrival->host());
    showPath("connecting…");
    showStatus({});
    wasTouched = false;
    showWaiting();
    hostArrival->begin(collaborators.mainContext, *connections, login);
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
    auto const destination = hostArrival->destination();
    if (!hostArrival->isOpeningFolder()) {
        hostArrival.reset(); // the host is up, and this folder is as any other
        notices.clear();
    }
    auto typed = std::exchange(typedWish, {});
    startNavigation({.path = std::move(path),
                     .select = destination.cursor,
                     .source = std::move(source),
                     .connection = destination.connection});
    typedWish = std::move(typed);
}

/// The host has been reached, or not.
void PaneController::endHostArrival()
{
    if (hostArrival->isOpeningFolder())
        return; // the arrival of the folder calls this again
    auto const arrival = std::exchange(hostArrival, nullptr);
    if (arrival->failure()) {
        showFailedHost(*arrival);
        return;
    }
    notices.clear();
    showWaiting();
    if (arrival->stage() == HostArrival::Stage::onFolder)
        refreshStatus();
}

void PaneController::showFailedHost(HostArrival const &arrival)
{
    auto place = arrival.destination();
    if (arrival.stage() != HostArrival::Stage::connecting)
        place = {arrival.host(), pathOnShow(), true}; // the remembered folder that the user went to
    PaneNotices::Failure failure{
        .place = place, .reason = arrival.failure(), .retry = [weak = weak_from_this(), place] {
            if (auto const self = weak.lock())
                self->setOut(place, HostLogin::silent);
        }};
    typedWish.clear(); // what the strip proposes goes first
    if (navigator->isUnderWay())
        notices.fail(std::move(failure)); // that navigation comes to its own end
    else
        showFailure(std::move(failure));
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

void PaneController::noticeActionChosen(PaneNotice::Action action)
{
    using Action = PaneNotice::Action;
    switch (action) {
    case Action::retry:
        if (auto const *const failure = notices.failure()) {
            auto const retry = failure->retry; // what it does may end the failure
            wasTouched = false;
            retry();
        }
        break;
    case Action::logIn:
        logIn();
        break;
    case Action::details:
        showDetails("Details", &PaneNotice::details);
        break;
    case Action::showKey:
        showDetails("Host Key", &PaneNotice::keys);
        break;
    case Action::giveUp:
        giveUp();
        break;
    }
}

void PaneController::showDetails(char const *title, std::string PaneNotice::*words)
{
    auto const &shown = notices.onShow();
    if (shown && callbacks.onDetailsWanted)
        callbacks.onDetailsWanted(title, (*shown).*words);
}

void PaneController::logIn()
{
    auto const *const failure = notices.failure();
    if (failure && connections && failure->place.connection != localConnection)
        setOut(failure->place, HostLogin::withQuestions);
}

} // namespace tw
