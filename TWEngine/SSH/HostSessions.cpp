#include "TWEngine/SSH/HostSessions.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/TimeOut.h"
#include "TWEngine/SSH/OneShotCommand.h"

namespace tw {

namespace {

/// What is sent unasked is small: a scan ahead must never hold eight megabytes before the next listing.
constexpr std::size_t maxBackgroundBytes = 2U << 20U;

/// Of what a host answers to the question what it speaks, as much is kept.
constexpr std::size_t maxProbeBytes = 65536;

/// A login may take longer than to reach the host, but one that hangs must not keep a user waiting for ever.
constexpr int probePatience = 3;

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

HostSessions::HostSessions(Collaborators with, std::string toHost, RemoteShellOptions settings,
                           std::function<SSHCommandLine::Arguments()> probeArguments)
    : engine(with.engine),
      strand(std::move(with.strand)),
      sshProgram(std::move(with.sshProgram)),
      savedPasswords(std::move(with.savedPasswords)),
      host(std::move(toHost)),
      options(std::move(settings)),
      probe(std::move(probeArguments))
{
}

void HostSessions::failAsShutDown()
{
    throw RemoteShellError::Disconnected("shut down");
}

Task<HostSessions::Shell> HostSessions::session(Self self, Choice choice)
{
    if (choice != Choice::interactive && self->backgroundComing) {
        auto const coming = *self->backgroundComing;
        co_await outcomeOf(coming.wait());
    }
    auto const wantsBackground =
        choice == Choice::background || (choice == Choice::backgroundIfReady && self->backgroundReady);
    auto shell = wantsBackground && self->background ? self->background : self->interactive;
    if (!shell)
        throw RemoteShellError::NotConnected();
    co_return shell;
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
    // A host that has never answered may have been out of reach of the question as well.
    if (self->timesUp == 0)
        co_await askWhatItSpeaks(self);
    auto const interactive = self->interactive;
    auto const before = co_await interactive->state();
    co_await interactive->connect();
    // One that was up is not up again: who hears of a loss that nobody has mended yet must not take it for mended.
    if (!before.isConnected)
        ++self->timesUp;
}

Task<void> HostSessions::askWhatItSpeaks(Self self)
{
    auto question = OneShotCommand::run(self->engine.io(),
                                        {.program = self->sshProgram, .arguments = self->probe(), .output = PipeEnd{}},
                                        maxProbeBytes);
    auto const limit =
        std::chrono::duration_cast<std::chrono::nanoseconds>(probePatience * self->options.connectTimeout);
    auto const asked = co_await outcomeOf(withTimeOut(self->engine.clock(), limit, std::move(question)));
    auto const context = co_await currentContext();
    if (context.stop.stop_requested())
        throw Cancelled();
    // A probe that fails says nothing; why the host is out of reach is told by the session.
    self->dialect = shellDialectFromProbe(asked.value ? asked.value->output : "");
    auto const with = co_await sessionOptions(self);
    self->makeSessions(with);
}

Task<RemoteShellOptions> HostSessions::sessionOptions(Self self)
{
    auto with = self->options;
    if (with.askpassAccount || !self->savedPasswords.exists || !self->savedPasswords.helper)
        co_return with;
    auto const isSaved = co_await self->engine.workers().run(
        WorkPriority::interactive, [exists = self->savedPasswords.exists, host = self->host] { return exists(host); });
    if (isSaved) {
        with.askpassHelper = self->savedPasswords.helper;
        with.askpassAccount = self->host;
    }
    co_return with;
}

/// Makes the attempt, or joins the one that is under way, and starts the second session behind it.
Task<void> HostSessions::comeUp(Self self, Task<void> attempt, std::stop_token giveUp)
{
    auto const context = co_await currentContext();
    auto const endedBefore = self->timesEnded;
    // An attempt that its own caller gives up is none of those who have joined it: one of them makes the next.
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
    self->startBackground();
}

/// Not waited for: what is asked of the first session need not wait for the second.
void HostSessions::startBackground()
{
    if (!backgroundComing || backgroundComing->isDone())
        backgroundComing = SharedTask<void>::start(strand.executor(), connectBackground(shared_from_this()));
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

void HostSessions::makeSessions(RemoteShellOptions const &with)
{
    auto const make = [this](RemoteShellOptions const &settings) {
        return std::make_shared<RemoteShell>(
            RemoteShell::Collaborators{
                .strand = engine.makeStrand(), .io = engine.io(), .clock = engine.clock(), .sshProgram = sshProgram},
            host, settings, dialect);
    };
    auto small = with;
    small.maxResponseBytes = std::min(with.maxResponseBytes, maxBackgroundBytes);
    interactive = make(with);
    background = make(small);
}

Task<void> HostSessions::disconnect()
{
    return disconnectHere(shared_from_this());
}

Task<void> HostSessions::disconnectHere(Self self)
{
    ++self->timesEnded;
    std::vector<SharedTask<void>> ending;
    for (auto const &task : {self->comingUp, self->backgroundComing}) {
        if (!task)
            continue;
        task->cancel();
        ending.push_back(*task);
    }
    for (auto const &shell : {self->interactive, self->background}) {
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
    // Not given up when one of its callers is stopped: the others still wait for it.
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
    if (self->backgroundComing) {
        auto const coming = *self->backgroundComing;
        co_await outcomeOf(coming.wait());
    }
    co_await interactive->connect();
    ++self->timesUp;
}

} // namespace tw
