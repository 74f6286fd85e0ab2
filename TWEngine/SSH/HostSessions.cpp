#include "TWEngine/SSH/HostSessions.h"

#include "TWEngine/Runtime/EngineRuntime.h"

namespace tw {

namespace {

/// What is sent unasked is small: a scan ahead must never hold eight megabytes before the next listing.
constexpr std::size_t maxBackgroundBytes = 2U << 20U;

/// The first session is the one that logs in, which may take longer than to reach the host. To reach it, ssh has the
/// limit itself.
constexpr int loginPatience = 3;

/// Follows the words of ssh: a key may have been refused, or the host may be out of reach.
constexpr auto lockedKeyStore = " (the key store with the password of this host is locked)";

bool isCancelled(std::exception_ptr const &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (Cancelled const &) {
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace

HostSessions::HostSessions(Collaborators with, std::string toHost, RemoteShellOptions settings)
    : engine(with.engine),
      strand(std::move(with.strand)),
      sshProgram(std::move(with.sshProgram)),
      savedPasswords(std::move(with.savedPasswords)),
      host(std::move(toHost)),
      options(std::move(settings))
{
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
    } catch (RemoteShellError::TimedOut const &late) {
        if (late.session == RemoteShellError::TimedOut::Session::ended)
            throw RemoteShellError::OutcomeUnknown(host);
        throw;
    }
}

Task<HostSessions::Shell> HostSessions::session(Self self, Choice choice)
{
    // Until the first session is up, what the host speaks is a guess.
    if (!self->interactive || self->timesUp == 0)
        throw RemoteShellError::NotConnected();
    switch (choice) {
    case Choice::interactive:
        break;
    case Choice::background:
    case Choice::backgroundIfReady: {
        auto shell = co_await backgroundSession(self, choice);
        co_return shell;
    }
    case Choice::work: {
        auto shell = co_await workSession(self);
        co_return shell;
    }
    }
    co_return self->interactive;
}

Task<HostSessions::Shell> HostSessions::backgroundSession(Self self, Choice choice)
{
    if (!self->backgroundComing)
        self->backgroundComing = SharedTask<void>::start(self->strand.executor(), connectBackground(self));
    auto const coming = *self->backgroundComing;
    co_await outcomeOf(coming.wait());
    auto const isWanted = choice == Choice::background || self->backgroundReady;
    co_return isWanted ? self->background : self->interactive;
}

Task<HostSessions::Shell> HostSessions::workSession(Self self)
{
    auto const endedBefore = self->timesEnded;
    auto const work = self->work;
    // What is lost is found out before a command is sent: afterwards the command could not be sent again.
    auto const before = co_await work->state();
    if (before.isConnected)
        co_return work;
    if (!self->workComing || self->workComing->isDone())
        self->workComing = SharedTask<void>::start(self->strand.executor(), work->connect());
    auto const coming = *self->workComing;
    auto outcome = co_await outcomeOf(coming.wait());
    if (self->timesEnded != endedBefore)
        failAsShutDown();
    if (!outcome.failure)
        co_return work;
    auto const interactive = self->interactive;
    auto const first = co_await interactive->state();
    if (!first.isConnected)
        outcome.take();
    co_return interactive;
}

Task<void> HostSessions::connect()
{
    return connectHere(shared_from_this());
}

Task<void> HostSessions::connectHere(Self self)
{
    auto const context = co_await currentContext();
    co_await comeUp(self, connectOnce(self), context.stop);
}

Task<void> HostSessions::connectOnce(Self self)
{
    if (self->timesUp == 0) {
        co_await namingLockedKeyStore(self, connectFirst(self));
        co_return;
    }
    auto const interactive = self->interactive;
    auto const before = co_await interactive->state();
    co_await interactive->connect();
    // Count only transitions from down to up: a request that learns of a loss late must not mistake this for a
    // reconnection.
    if (!before.isConnected)
        ++self->timesUp;
}

Task<void> HostSessions::namingLockedKeyStore(Self self, Task<void> attempt)
{
    try {
        co_await std::move(attempt);
    } catch (RemoteShellError::ConnectFailed const &failure) {
        if (!self->isKeyStoreLocked)
            throw;
        throw RemoteShellError::ConnectFailed(failure.host, failure.detail + lockedKeyStore);
    }
}

/// Each attempt asks anew what the host speaks, until one succeeds.
Task<void> HostSessions::connectFirst(Self self)
{
    auto const with = co_await sessionOptions(self);
    self->makeSessions(ShellDialect::posix, with);
    auto const guessed = self->interactive;
    auto outcome = co_await outcomeOf(guessed->connect());
    if (outcome.failure && !isCancelled(outcome.failure)) {
        auto const state = co_await guessed->state();
        if (shellDialectFromProbe(state.unexpectedOutput) == ShellDialect::posix)
            outcome.take();
        self->makeSessions(ShellDialect::powershell, with);
        auto const interactive = self->interactive;
        outcome = co_await outcomeOf(interactive->connect());
    }
    outcome.take();
    ++self->timesUp;
}

Task<RemoteShellOptions> HostSessions::sessionOptions(Self self)
{
    auto with = self->options;
    if (with.askpassAccount || !self->savedPasswords.find || !self->savedPasswords.helper)
        co_return with;
    auto const found = co_await self->engine.workers().run(
        WorkPriority::interactive, [ask = self->savedPasswords.find, host = self->host] { return ask({host}); });
    auto isReadable = found.presence == SSHPassword::Presence::readable;
    if (found.presence == SSHPassword::Presence::locked)
        isReadable = co_await self->savedPasswords.unlock(found.account);
    self->isKeyStoreLocked = found.presence == SSHPassword::Presence::locked && !isReadable;
    if (isReadable) {
        with.askpassHelper = self->savedPasswords.helper;
        with.askpassAccount = self->host;
    }
    co_return with;
}

/// Makes the attempt, or joins the one that is in flight.
Task<void> HostSessions::comeUp(Self self, Task<void> attempt, std::stop_token giveUp)
{
    auto const context = co_await currentContext();
    auto const endedBefore = self->timesEnded;
    // If the caller that started an attempt is cancelled, a waiter that joined it starts a new one.
    while (self->comingUp && !self->comingUp->isDone()) {
        auto const running = *self->comingUp;
        auto outcome = co_await outcomeOf(running.wait());
        auto const wasGivenUp = outcome.failure && isCancelled(outcome.failure);
        if (wasGivenUp && context.stop.stop_requested())
            throw Cancelled();
        if (self->timesEnded != endedBefore)
            failAsShutDown();
        if (!wasGivenUp) {
            outcome.take();
            co_return;
        }
    }
    auto const running = SharedTask<void>::start(context.executor, std::move(attempt));
    self->comingUp = running;
    std::stop_callback const passOn(giveUp, [running] { running.cancel(); });
    auto outcome = co_await outcomeOf(running.wait().withStop({}));
    if (self->timesEnded != endedBefore && !context.stop.stop_requested())
        failAsShutDown();
    outcome.take();
}

Task<void> HostSessions::connectBackground(Self self)
{
    auto const background = self->background;
    auto const context = co_await currentContext();
    if (context.stop.stop_requested())
        throw Cancelled();
    auto const outcome = co_await outcomeOf(background->connect());
    self->backgroundReady = outcome.value.has_value();
}

void HostSessions::makeSessions(ShellDialect speaking, RemoteShellOptions const &with)
{
    dialect = speaking;
    auto const make = [&](SSHCommandLine::Arguments arguments, RemoteShellOptions const &settings) {
        return std::make_shared<RemoteShell>(
            RemoteShell::Collaborators{.strand = engine.makeStrand(),
                                       .io = engine.io(),
                                       .clock = engine.clock(),
                                       .client =
                                           SSHCommandLine::sessionClient(sshProgram, std::move(arguments), settings)},
            host, settings, dialect);
    };
    auto const plain = SSHCommandLine::session(with, host, dialect);
    auto patient = with;
    patient.connectTimeout *= loginPatience;
    auto small = with;
    small.maxResponseBytes = std::min(with.maxResponseBytes, maxBackgroundBytes);
    interactive = make(dialect == ShellDialect::posix ? SSHCommandLine::firstSession(with, host) : plain, patient);
    background = make(plain, small);
    work = make(plain, with);
}

Task<void> HostSessions::disconnect()
{
    return disconnectHere(shared_from_this());
}

Task<void> HostSessions::disconnectHere(Self self)
{
    ++self->timesEnded;
    std::vector<SharedTask<void>> ending;
    for (auto const &task :
         {self->comingUp, std::exchange(self->backgroundComing, {}), std::exchange(self->workComing, {})}) {
        if (!task)
            continue;
        task->cancel();
        ending.push_back(*task);
    }
    for (auto const &shell : {self->interactive, self->background, self->work}) {
        if (shell)
            co_await outcomeOf(shell->shutdown());
    }
    for (auto const &task : ending)
        co_await outcomeOf(task.wait());
}

Task<void> HostSessions::reconnect()
{
    return reconnectHere(shared_from_this());
}

Task<void> HostSessions::reconnectHere(Self self)
{
    // If one of its callers is cancelled, the others still wait for it.
    co_await comeUp(self, reconnectOnce(self), {});
}

Task<void> HostSessions::reconnectOnce(Self self)
{
    auto const interactive = self->interactive;
    auto const background = self->background;
    if (!interactive || !background)
        throw RemoteShellError::NotConnected();
    if (self->timesUp == 0) {
        co_await connectOnce(self);
        co_return;
    }
    co_await interactive->shutdown();
    co_await background->shutdown();
    if (auto const coming = std::exchange(self->backgroundComing, {}))
        co_await outcomeOf(coming->wait());
    self->backgroundReady = false;
    co_await interactive->connect();
    ++self->timesUp;
}

} // namespace tw
