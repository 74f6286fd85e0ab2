// How HostSessions connects, and carries out what the life of the host orders.

#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/ClientLog.h"
#include "TWEngine/SSH/ControlPath.h"
#include "TWEngine/SSH/HostSessions.h"
#include "TWEngine/SSH/OneShotCommand.h"

namespace tw {

namespace {

/// What is sent unasked is small: a scan ahead must never hold eight megabytes before the next listing.
constexpr std::size_t maxBackgroundBytes = 2U << 20U;

/// Follows the words of ssh: a key may have been refused, or the host may be out of reach.
constexpr auto lockedKeyStore = " (the key store with the password of this host is locked)";

} // namespace

void HostSessions::follow(HostLife::Orders const &orders)
{
    for (auto const &order : orders)
        carryOut(order);
    publish();
    setTimer();
}

void HostSessions::carryOut(Order const &order)
{
    switch (order.kind) {
    case Order::Kind::beginAttempt:
        beginAttempt(order);
        break;
    case Order::Kind::endAttempt:
        endAttempt(order);
        break;
    case Order::Kind::beginSpare:
        spawn({strand.executor(), {}}, bringUpSpare(shared_from_this(), sessions));
        break;
    case Order::Kind::beginReplacing:
        beginReplacement(order.number);
        break;
    case Order::Kind::endReplacing:
        replacement->task.cancel();
        break;
    case Order::Kind::replace:
        adoptReplacement();
        break;
    }
}

/// Nobody waits for it yet.
Task<void> HostSessions::bringUpSpare(Self self, Set set)
{
    co_await outcomeOf(bringUp(self, set, Role::spare));
}

UpdateStream<HostStatus> HostSessions::statuses()
{
    auto stream = subscribers.subscribe();
    subscribers.send(life.status());
    return stream;
}

void HostSessions::publish()
{
    if (life.status() == published)
        return;
    published = life.status();
    subscribers.send(published);
}

void HostSessions::setTimer()
{
    auto const next = life.wakeAt();
    // A timer that fires too early is harmless, so it stays as it is when its time moves back.
    if (!next || (wakingAt && *wakingAt <= *next))
        return;
    wakingAt = next;
    timer.request_stop();
    timer = std::stop_source();
    spawn({strand.executor(), timer.get_token()}, wake(weak_from_this(), engine.clock(), *next - now()));
}

Task<void> HostSessions::wake(std::weak_ptr<HostSessions> weak, std::shared_ptr<Clock> clock, HostLife::Duration after)
{
    co_await clock->sleep(after);
    auto const self = weak.lock();
    if (!self)
        co_return;
    self->wakingAt.reset();
    self->follow(self->life.tick(self->now()));
}

void HostSessions::beginAttempt(Order const &order)
{
    attempt = Attempt{
        .number = order.number,
        .outcome = std::make_shared<SharedCompletion<void>>(),
        .task = SharedTask<void>::start(strand.executor(), makeAttempt(shared_from_this(), order.number, order.way))};
}

void HostSessions::endAttempt(Order const &order)
{
    attempt->outcome->settle({.value = {}, .failure = failureOf(order)});
    attempt->task.cancel();
}

std::exception_ptr HostSessions::failureOf(Order const &ended) const
{
    switch (ended.why) {
    case Order::Why::none:
    case Order::Why::nobodyWaits:
        break;
    case Order::Why::superseded:
        return std::make_exception_ptr(SupersededAttempt());
    case Order::Why::ended:
        return std::make_exception_ptr(RemoteShellError::Disconnected("shut down"));
    case Order::Why::refusedByUser:
        return std::make_exception_ptr(RemoteShellError::ConnectFailed(host, "the login was cancelled"));
    case Order::Why::refusedByHost:
        return std::make_exception_ptr(
            RemoteShellError::ConnectFailed(host, "three answers were not accepted", reportOfFirst()));
    case Order::Why::noAnswer: {
        auto const limit = std::chrono::duration_cast<std::chrono::seconds>(life.limitOfPhase());
        return std::make_exception_ptr(RemoteShellError::ConnectFailed(
            host, "no response within " + std::to_string(limit.count()) + "s", reportOfFirst()));
    }
    }
    return std::make_exception_ptr(Cancelled());
}

ClientReport HostSessions::reportOfFirst() const
{
    return sessions ? sessions->shell(Role::first)->report() : ClientReport();
}

Task<void> HostSessions::makeAttempt(Self self, std::uint64_t number, Way way)
{
    auto outcome = co_await outcomeOf(connectFirst(self, number, way));
    if (!self->life.isCurrent(number))
        co_return; // it was ended, and its callers know
    if (outcome.failure)
        self->life.attemptFailed(number, self->now());
    else
        self->life.attemptUp(number, self->now(), self->sessions->options.sharing);
    self->follow({});
    self->attempt->outcome->settle(std::move(outcome));
}

Task<void> HostSessions::connectFirst(Self self, std::uint64_t number, Way way)
{
    auto const login = co_await beginLogin(self, number, way);
    auto with = co_await sessionOptions(self, number);
    if (login)
        with.loginEnvironment = login->environment();
    if (!self->life.isCurrent(number))
        throw Cancelled(); // the sessions are those of another attempt by now
    auto outcome = co_await outcomeOf(connectWith(self, with));
    try {
        outcome.take();
    } catch (RemoteShellError::ConnectFailed const &failure) {
        if (!self->isKeyStoreLocked)
            throw;
        throw RemoteShellError::ConnectFailed(failure.host, failure.detail + lockedKeyStore, failure.report);
    }
    if (login)
        login->succeed();
}

/// Until a connection has come up, each attempt asks anew what the host speaks.
Task<void> HostSessions::connectWith(Self self, RemoteShellOptions with)
{
    if (self->life.generation() > 0) {
        for (auto const role : {Role::first, Role::background, Role::spare})
            co_await self->sessions->shell(role)->shutdown();
        co_await connectAs(self, self->dialect, with);
        co_return;
    }
    auto outcome = co_await outcomeOf(connectAs(self, ShellDialect::posix, with));
    auto const state = co_await self->sessions->shell(Role::first)->state();
    if (outcome.failure && shellDialectFromProbe(state.unexpectedOutput) == ShellDialect::powershell)
        outcome = co_await outcomeOf(connectAs(self, ShellDialect::powershell, with));
    outcome.take();
}

/// A session keeps its object, and with it its nonce, as long as it is connected in the same way.
Task<void> HostSessions::connectAs(Self self, ShellDialect speaking, RemoteShellOptions with)
{
    auto const isSame = self->life.generation() > 0 && self->sessions->options == with;
    self->dialect = speaking;
    if (!isSame)
        self->adopt(self->makeSessions(with));
    co_await self->sessions->shell(Role::first)->connect();
}

/// Null if ssh is not to ask the user, or cannot.
Task<std::unique_ptr<LoginDesk::Login>> HostSessions::beginLogin(Self self, std::uint64_t number, Way way)
{
    if (way == Way::quiet || !self->loginDesk)
        co_return nullptr;
    auto const here = [weak = std::weak_ptr(self), executor = self->strand.executor(), number](auto event) {
        return [weak, executor, number, event](auto... arguments) {
            executor->post([weak, number, event, arguments...] {
                if (auto const sessions = weak.lock())
                    sessions->follow(event(sessions->life, number, sessions->now(), arguments...));
            });
        };
    };
    LoginDesk::Reports reports{
        .questionOpened = here([](HostLife &life, std::uint64_t attempt, HostLife::Time now) {
            life.questionOpened(attempt, now);
            return HostLife::Orders();
        }),
        .questionClosed = here([](HostLife &life, std::uint64_t attempt, HostLife::Time now) {
            life.questionClosed(attempt, now);
            return HostLife::Orders();
        }),
        .refused = here([](HostLife &life, std::uint64_t attempt, HostLife::Time now, LoginDesk::Refusal refusal) {
            return life.refuse(
                attempt, refusal == LoginDesk::Refusal::byUser ? Order::Why::refusedByUser : Order::Why::refusedByHost,
                now);
        })};
    auto login = co_await self->loginDesk->begin(self->host, std::move(reports));
    co_return login;
}

/// How this attempt connects: as the user's configuration says, over a connection that the user has opened if there is
/// one, and with the askpass program if a password or a passphrase is saved. Unlocks the key store for it.
Task<RemoteShellOptions> HostSessions::sessionOptions(Self self, std::uint64_t number)
{
    auto with = self->options;
    auto const settings = co_await self->configuration->settingsOf(self->host);
    if (settings.connectTimeout) {
        with.connectTimeout = *settings.connectTimeout;
        self->life.limitReaching(number, *settings.connectTimeout);
        self->follow({});
    }
    with.knowsSessionType = settings.knowsSessionType;
    if (settings.controlPath && settings.controlPath != with.controlPath) {
        auto const isOpen = co_await self->configuration->isMasterOpen(self->host, *settings.controlPath);
        if (isOpen) {
            with.controlPath = settings.controlPath;
            with.sharing = RemoteShellOptions::Sharing::users;
        }
    }
    auto const isReadable = co_await findSavedPassword(self, number, settings.identityFiles);
    if (isReadable && !with.askpassAccount) {
        with.askpassHelper = self->savedPasswords.helper;
        with.askpassAccount = self->host;
    }
    co_return with;
}

Task<bool> HostSessions::findSavedPassword(Self self, std::uint64_t number, std::vector<std::string> identityFiles)
{
    if (self->options.askpassAccount || !self->savedPasswords.find || !self->savedPasswords.helper)
        co_return false;
    auto accounts = std::move(identityFiles);
    accounts.insert(accounts.begin(), self->host);
    auto const found = co_await self->engine.workers().run(
        WorkPriority::interactive, [ask = self->savedPasswords.find, accounts] { return ask(accounts); });
    auto isReadable = found.presence == SSHPassword::Presence::readable;
    if (found.presence == SSHPassword::Presence::locked) {
        // The key store asks the user, who may take longer than a host is given.
        self->life.questionOpened(number, self->now());
        self->follow({});
        auto const unlocked = co_await outcomeOf(self->savedPasswords.unlock(found.account));
        self->life.questionClosed(number, self->now());
        self->follow({});
        isReadable = unlocked.value.value_or(false);
    }
    self->isKeyStoreLocked = found.presence == SSHPassword::Presence::locked && !isReadable;
    co_return isReadable;
}

HostSessions::Set HostSessions::makeSessions(RemoteShellOptions const &with)
{
    // The sessions report to their set, which exists when the first of them is connected.
    auto const home = std::make_shared<std::weak_ptr<SessionSet>>();
    auto const make = [&](Role role, std::size_t place) {
        auto own = with;
        if (role != Role::first)
            own.loginEnvironment.clear(); // the first session logs in for all
        auto settings = own;
        // The life limits an attempt by what it has reached. A session beside the first one has one limit for all.
        settings.connectTimeout = with.connectTimeout + with.loginTimeout + with.shellTimeout;
        if (role == Role::background)
            settings.maxResponseBytes = std::min(with.maxResponseBytes, maxBackgroundBytes);
        auto const isFirst = role == Role::first && dialect == ShellDialect::posix;
        auto arguments =
            isFirst ? SSHCommandLine::firstSession(own, host) : SSHCommandLine::session(own, host, dialect);
        return std::make_shared<RemoteShell>(
            RemoteShell::Collaborators{.strand = strand,
                                       .io = engine.io(),
                                       .clock = engine.clock(),
                                       .client = SSHCommandLine::sessionClient(sshProgram, std::move(arguments), own),
                                       .words = ClientLog::maker(),
                                       .events = eventsOf(home, place)},
            host, std::move(settings), dialect);
    };
    auto set = std::make_shared<SessionSet>(with, make);
    *home = set;
    return set;
}

/// Events of a set that is not in use have no effect, but for those of the attempt that connects it.
RemoteShell::Events HostSessions::eventsOf(std::shared_ptr<std::weak_ptr<SessionSet>> home, std::size_t place)
{
    auto const whenInUse = [weak = weak_from_this(), home, place](auto event) {
        return [weak, home, place, event](auto... arguments) {
            auto const self = weak.lock();
            auto const set = home->lock();
            if (self && set && self->sessions == set)
                event(*self, set->roleOf(place), arguments...);
        };
    };
    return {.onStage = whenInUse([](HostSessions &self, Role role, ClientStage stage) {
                if (role != Role::first)
                    return;
                self.life.reached(self.life.attempt(), stage, self.now());
                self.follow({});
            }),
            .onHeard = whenInUse([](HostSessions &self, Role role) {
                if (role == Role::first)
                    self.follow(self.life.heard(self.now()));
            }),
            .onLost = whenInUse([](HostSessions &self, Role role) {
                self.follow(self.life.sessionLost(role, self.life.generation(), self.now()));
            })};
}

void HostSessions::adopt(Set set)
{
    auto const before = std::exchange(sessions, std::move(set));
    if (!before)
        return;
    for (auto const role : {Role::first, Role::background, Role::spare})
        spawn({strand.executor(), {}}, shutDown(before->shell(role)));
    // A changing command may be under way in them. Each ends with its last user.
    for (auto const role : HostLife::workRoles)
        leftBehind.push_back(before->shell(role));
    announceRoom();
    std::erase_if(leftBehind, [](auto const &each) { return each.expired(); });
}

void HostSessions::beginReplacement(std::uint64_t number)
{
    auto with = sessions->options;
    with.sharing = RemoteShellOptions::Sharing::ours;
    with.loginEnvironment.clear();
    if (options.controlPath)
        with.controlPath = ControlPath::beside(*options.controlPath, ++connectionsBeside);
    auto const beside = makeSessions(with);
    replacement = Replacement{
        .number = number,
        .sessions = beside,
        .task = SharedTask<void>::start(strand.executor(), makeReplacement(shared_from_this(), number, beside))};
}

Task<void> HostSessions::makeReplacement(Self self, std::uint64_t number, Set set)
{
    auto const outcome = co_await outcomeOf(set->shell(Role::first)->connect());
    if (outcome.value)
        self->follow(self->life.replacementUp(number, self->now()));
    else
        self->life.replacementFailed(number, self->now());
    self->follow({});
    if (self->sessions != set)
        co_await outcomeOf(set->shell(Role::first)->shutdown());
}

/// The clients of the silent connection end, and nobody begins to share it. What works over it may go on.
void HostSessions::adoptReplacement()
{
    auto const silent = sessions;
    adopt(replacement->sessions);
    if (silent->options.controlPath && silent->options.sharing == RemoteShellOptions::Sharing::ours)
        spawn({strand.executor(), {}}, stopSharing(shared_from_this(), silent->options));
}

Task<void> HostSessions::stopSharing(Self self, RemoteShellOptions with)
{
    auto client =
        SSHCommandLine::transferClient(self->sshProgram, SSHCommandLine::stopSharing(*with.controlPath, self->host));
    co_await outcomeOf(OneShotCommand::run(self->engine.io(), std::move(client), 0));
}

} // namespace tw
