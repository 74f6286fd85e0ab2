#include "TWEngine/SSH/HostSessions.h"

#include "TWCore/Async/FailureKind.h"
#include "TWEngine/Runtime/EngineRuntime.h"

namespace tw {

HostSessions::HostSessions(Collaborators with, std::string toHost, RemoteShellOptions settings)
    : engine(with.engine),
      strand(std::move(with.strand)),
      sshProgram(std::move(with.sshProgram)),
      savedPasswords(std::move(with.savedPasswords)),
      loginDesk(std::move(with.loginDesk)),
      configuration(std::make_shared<HostConfiguration>(engine, sshProgram)),
      host(std::move(toHost)),
      options(std::move(settings)),
      life({.reaching = std::chrono::duration_cast<HostLife::Duration>(options.connectTimeout),
            .loggingIn = options.loginTimeout,
            .waitingForShell = options.shellTimeout}),
      subscribers(strand.executor())
{
}

HostSessions::~HostSessions()
{
    timer.request_stop();
}

HostLife::Time HostSessions::now() const
{
    return engine.clock()->steadyNow();
}

void HostSessions::failAsShutDown()
{
    throw RemoteShellError::Disconnected("shut down");
}

/// What a request with an effect fails with if it failed with `failure` after it was sent.
void HostSessions::failAsLost(std::exception_ptr const &failure) const
{
    try {
        std::rethrow_exception(failure);
    } catch (RemoteShellError::Disconnected const &) {
        throw RemoteShellError::OutcomeUnknown(host);
    }
}

// Requests.

Task<HostSessions::Target> HostSessions::session(Self self, Choice choice)
{
    for (;;) {
        if (!self->life.isUp())
            throw RemoteShellError::NotConnected();
        auto const set = self->sessions;
        auto const route = self->life.route(choice, set->busy());
        if (route.hasToWait) {
            co_await awaitRoom(self);
            continue;
        }
        if (!route.isReady) {
            co_await bringUp(self, set, route.role);
            continue;
        }
        if (route.role == Role::spare)
            self->letSpareTakeOver();
        auto const role = route.role == Role::spare ? Role::first : route.role;
        auto carried = HostLife::isWork(role) ? std::make_unique<Carried>(self, set, role, choice) : nullptr;
        co_return Target{set->shell(role), role, std::move(carried)};
    }
}

/// Until long work may have a session. The caller looks again whether it has: others were told too.
Task<void> HostSessions::awaitRoom(Self self)
{
    auto const endedBefore = self->life.endings();
    auto const room = self->waitingForRoom.emplace_back(std::make_shared<Completion<Done>>());
    auto outcome = co_await outcomeOf(Completion<Done>::wait(room));
    std::erase(self->waitingForRoom, room); // it is still there if the caller was stopped
    outcome.take();
    if (self->life.endings() != endedBefore)
        failAsShutDown();
}

void HostSessions::announceRoom()
{
    for (auto const &waiting : std::exchange(waitingForRoom, {}))
        waiting->succeed({});
}

Task<void> HostSessions::bringUp(Self self, Set set, Role role)
{
    auto const endedBefore = self->life.endings();
    auto &coming = set->comingUp(role);
    if (!coming || coming->isDone())
        coming = SharedTask<void>::start(self->strand.executor(), connectSession(self, set, role));
    auto const task = *coming;
    co_await task.wait();
    if (self->life.endings() != endedBefore)
        failAsShutDown();
}

/// Reports to the life how it ended. Throws nothing.
Task<void> HostSessions::connectSession(Self self, Set set, Role role)
{
    auto const shell = set->shell(role);
    auto const generation = self->life.generation();
    auto const outcome = co_await outcomeOf(shell->connect());
    if (self->life.generation() != generation || !self->life.isUp())
        co_return;
    if (outcome.value)
        self->life.sessionUp(role);
    else
        self->life.sessionRefused(role);
}

void HostSessions::letSpareTakeOver()
{
    auto const heldUp = sessions->shell(Role::first);
    sessions->swapFirstWithSpare();
    life.spareTookOver();
    spawn({strand.executor(), {}}, shutDown(heldUp));
}

Task<void> HostSessions::shutDown(Shell shell)
{
    co_await outcomeOf(shell->shutdown());
}

// Being up.

Task<void> HostSessions::connect()
{
    return beUp(shared_from_this(), Way::quiet);
}

Task<void> HostSessions::logIn()
{
    return beUp(shared_from_this(), Way::asking);
}

Task<void> HostSessions::beUp(Self self, Way way)
{
    auto const context = co_await currentContext();
    auto const endedBefore = self->life.endings();
    for (;;) {
        if (context.stop.stop_requested())
            throw Cancelled();
        self->follow(self->life.want(way, self->now()));
        if (self->life.isUp())
            co_return;
        auto const number = self->attempt->number;
        auto const awaited = self->attempt->outcome;
        auto outcome = co_await outcomeOf(SharedCompletion<void>::wait(awaited));
        if (context.stop.stop_requested()) {
            self->follow(self->life.leave(number, self->now()));
            throw Cancelled();
        }
        if (self->life.endings() != endedBefore)
            failAsShutDown();
        if (failureIs<SupersededAttempt>(outcome.failure))
            continue;
        outcome.take();
        co_return;
    }
}

Task<void> HostSessions::reconnect()
{
    return reconnectHere(shared_from_this());
}

Task<void> HostSessions::reconnectHere(Self self)
{
    if (!self->life.wasWanted())
        throw RemoteShellError::NotConnected();
    self->follow(self->life.sessionLost(Role::first, self->life.generation(), self->now()));
    co_await beUp(self, Way::quiet);
}

Task<void> HostSessions::disconnect()
{
    return disconnectHere(shared_from_this());
}

Task<void> HostSessions::disconnectHere(Self self)
{
    self->follow(self->life.end(self->now()));
    self->announceRoom();
    self->timer.request_stop();
    self->wakingAt.reset();
    std::vector<SharedTask<void>> ending;
    std::vector<Shell> shells;
    if (self->attempt)
        ending.push_back(self->attempt->task);
    if (self->replacement)
        ending.push_back(self->replacement->task);
    for (auto const &set : {self->sessions, self->replacement ? self->replacement->sessions : nullptr}) {
        if (!set)
            continue;
        for (auto const role : SessionSet::roles) {
            shells.push_back(set->shell(role));
            if (auto const coming = std::exchange(set->comingUp(role), {}))
                ending.push_back(*coming);
        }
    }
    for (auto const &left : std::exchange(self->leftBehind, {})) {
        if (auto const shell = left.lock())
            shells.push_back(shell);
    }
    for (auto const &task : ending)
        task.cancel();
    for (auto const &shell : shells)
        co_await outcomeOf(shell->shutdown());
    for (auto const &task : ending)
        co_await outcomeOf(task.wait());
}

} // namespace tw
