#include "Tarnwick/Panes/HostArrival.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Provider/CommandHost.h"
#include "Tarnwick/Panes/TypedPath.h"

namespace tw {

void HostArrival::begin(std::shared_ptr<Executor> const &mainContext, Connections &connections, HostLogin login)
{
    TaskContext const context{mainContext, wish.get_token()};
    auto connecting =
        Connecting::start(context, login == HostLogin::silent ? connections.ssh(host()) : connections.logIn(host()));
    spawn(context, travel(weak_from_this(), connections.reach(host()), std::move(connecting)));
}

Task<void> HostArrival::travel(std::weak_ptr<HostArrival> weak, Task<std::shared_ptr<Browser>> reaching,
                               Connecting connecting)
{
    auto const isShown = co_await showRemembered(weak, std::move(reaching));
    auto outcome = co_await outcomeOf(connecting.join());
    auto self = weak.lock();
    if (!self)
        co_return;
    self->reason = outcome.failure;
    // A user who went on is not pulled back.
    if (outcome.failure || isShown || self->current == Stage::amongRemembered) {
        self->over = true;
        self->events.onEnd();
        co_return;
    }
    auto const wanted = self->wanted;
    self.reset();
    auto path = co_await startingFolder(*outcome.value, wanted);
    self = weak.lock();
    if (!self)
        co_return;
    self->over = true;
    if (self->current == Stage::amongRemembered)
        self->events.onEnd();
    else
        self->events.onFolder(*outcome.value, std::move(path));
}

/// Goes to the folder before the host is up, if a listing of it is remembered. True if so.
Task<bool> HostArrival::showRemembered(std::weak_ptr<HostArrival> weak, Task<std::shared_ptr<Browser>> reaching)
{
    auto const reached = co_await outcomeOf(std::move(reaching));
    auto self = weak.lock();
    if (!self || !reached.value)
        co_return false;
    self->source = *reached.value;
    self->events.onKnown();
    if (!self->wanted.pathWasExplicit)
        co_return false;
    auto const path = self->wanted.path;
    self.reset();
    auto const remembered = co_await (*reached.value)->remembered(path);
    self = weak.lock();
    if (!self || !remembered)
        co_return false;
    self->current = Stage::openingFolder;
    self->events.onFolder(*reached.value, path);
    co_return true;
}

/// Without a path that the user asked for, the host chooses. It also knows where "~" is.
Task<std::string> HostArrival::startingFolder(std::shared_ptr<Browser> source, PaneSpec wanted)
{
    auto const host = source->host();
    auto const isBelowHome = wanted.path.starts_with('~');
    if ((wanted.pathWasExplicit && !isBelowHome) || !host)
        co_return wanted.path;
    auto const home = co_await outcomeOf(host->defaultDirectory());
    if (!home.value || !home.value->starts_with('/'))
        co_return isBelowHome ? "/" : wanted.path;
    co_return isBelowHome ? fromHome(wanted.path, *home.value) : *home.value;
}

} // namespace tw
