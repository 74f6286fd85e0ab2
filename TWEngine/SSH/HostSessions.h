#pragma once

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Provider/HostCommand.h"
#include "TWEngine/Passwords/LoginDesk.h"
#include "TWEngine/Passwords/SavedPasswords.h"
#include "TWEngine/Runtime/Completion.h"
#include "TWEngine/Runtime/SharedTask.h"
#include "TWEngine/Runtime/UpdateFanOut.h"
#include "TWEngine/SSH/HostConfiguration.h"
#include "TWEngine/SSH/HostLife.h"
#include "TWEngine/SSH/SSHCommandLine.h"
#include "TWEngine/SSH/SessionSet.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tw {

class EngineRuntime;

/// Ends an attempt whose callers begin the next.
struct SupersededAttempt {};

/// Connects the sessions with one host and sends requests over them, as its HostLife decides.
///
/// The first session comes up with `connect`, each other one when it is first needed. A host that refuses the others
/// serves everything over the first. Long work leaves one of the sessions for work to what is short, and waits for its
/// turn before it is sent. A host that is silent while a person waits is connected beside the silent connection, which
/// the new one then replaces.
///
/// Threads: not serialised; all of it runs on the strand that it was made with.
/// Lifetime: shared; the engine outlives it. It is disconnected before it is dropped.
/// Cancellation: connecting is given up when nobody waits for it any more; a question that was sent is waited for,
/// unless it is a listing.
/// Errors: RemoteShellError. What is in flight at a disconnect fails with Disconnected and is not asked again.
class HostSessions : public std::enable_shared_from_this<HostSessions> {
public:
    struct Collaborators {
        EngineRuntime &engine;
        Strand strand;
        std::string sshProgram;
        /// Asked when the sessions are made.
        SavedPasswords savedPasswords = {};
        std::shared_ptr<LoginDesk> loginDesk = {}; ///< null: ssh never asks the user
    };

    using Choice = HostLife::Choice;

    /// How often a question is tried: to find out that there is no session, to lose one, and once more.
    static constexpr int mostRounds = 3;

    /// Starts nothing. `options` are complete.
    HostSessions(Collaborators collaborators, std::string host, RemoteShellOptions options);

    ~HostSessions();

    /// Connects the first session and finds out what the host speaks, unless that is known.
    Task<void> connect();

    /// The same, with questions of ssh to the user.
    Task<void> logIn();

    /// Ends the sessions that carry no work and connects the first again. Callers at the same time share one
    /// reconnection and its outcome. Work goes on: a copy of an hour must not die of a loss elsewhere.
    Task<void> reconnect();

    /// Ends all sessions. A later connect does not ask again what the host speaks.
    Task<void> disconnect();

    /// Asks a session, and once more after a reconnection if the session turns out to be lost. A question with an
    /// effect is never asked a second time once it was sent; then OutcomeUnknown is thrown. One that is not to connect
    /// the host fails with the loss instead.
    template <class T>
    Task<T> asking(Choice choice, std::function<Task<T>(RemoteShell &)> question,
                   CommandEffect effect = CommandEffect::none, CommandOnLoss onLoss = CommandOnLoss::connects)
    {
        return askingHere(shared_from_this(), choice, std::move(question), effect, onLoss);
    }

    /// The status now and each later one.
    UpdateStream<HostStatus> statuses();

    /// Null before the first connect.
    std::shared_ptr<RemoteShell> interactiveShell() const
    {
        return sessions ? sessions->shell(HostLife::Role::first) : nullptr;
    }

    ShellDialect speaks() const { return dialect; }

    /// Of the connection in use, for an ssh client that shares it; see SSHCommandLine.
    RemoteShellOptions const &optionsInUse() const { return sessions ? sessions->options : options; }

    /// True if the user has answered a question for the connection in use.
    bool neededTheUser() const { return life.neededTheUser(); }

    /// How often `disconnect` was called: what was begun before the last time is not wanted any more.
    std::uint64_t disconnections() const { return life.endings(); }

    /// What a task fails with that a disconnect has ended.
    [[noreturn]] static void failAsShutDown();

private:
    using Self = std::shared_ptr<HostSessions>;
    using Shell = std::shared_ptr<RemoteShell>;
    using Set = std::shared_ptr<SessionSet>;
    using Role = HostLife::Role;
    using Way = HostLife::Way;
    using Order = HostLife::Order;

    /// A connection on its way, and those who wait for it.
    struct Attempt {
        std::uint64_t number = 0;
        std::shared_ptr<SharedCompletion<void>> outcome;
        SharedTask<void> task;
    };

    struct Replacement {
        std::uint64_t number = 0;
        Set sessions;
        SharedTask<void> task;
    };

    /// Counts a request as the load of a work session for as long as it lives.
    class Carried;

    struct Target {
        Shell shell;
        Role role;
        std::unique_ptr<Carried> carried; ///< null: the session is none for work
    };

    /// Counts a question as asked for as long as it lives.
    class Asked;

    template <class T>
    static Task<T> askingHere(Self self, Choice choice, std::function<Task<T>(RemoteShell &)> question,
                              CommandEffect effect, CommandOnLoss onLoss);
    template <class T>
    static Task<T> askOnce(Self self, Task<T> question, CommandEffect effect);
    static Task<Target> session(Self self, Choice choice);
    static Task<void> awaitRoom(Self self);
    void announceRoom();
    static Task<void> bringUp(Self self, Set set, Role role);
    static Task<void> bringUpSpare(Self self, Set set);
    static Task<void> connectSession(Self self, Set set, Role role);

    static Task<void> beUp(Self self, Way way);
    static Task<void> reconnectHere(Self self);
    static Task<void> disconnectHere(Self self);

    static Task<void> makeAttempt(Self self, std::uint64_t number, Way way);
    static Task<void> connectFirst(Self self, std::uint64_t number, Way way);
    static Task<void> connectAs(Self self, ShellDialect speaking, RemoteShellOptions with);
    static Task<void> makeReplacement(Self self, std::uint64_t number, Set set);
    static Task<void> shutDown(Shell shell);
    static Task<void> stopSharing(Self self, RemoteShellOptions with);
    static Task<void> connectWith(Self self, RemoteShellOptions with);
    static Task<std::unique_ptr<LoginDesk::Login>> beginLogin(Self self, std::uint64_t number, Way way);
    static Task<RemoteShellOptions> sessionOptions(Self self, std::uint64_t number);
    static Task<bool> findSavedPassword(Self self, std::uint64_t number, std::vector<std::string> identityFiles);
    static Task<void> wake(std::weak_ptr<HostSessions> weak, std::shared_ptr<Clock> clock, HostLife::Duration after);

    /// Carries out what follows from an event of the life.
    void follow(HostLife::Orders const &orders);
    void carryOut(Order const &order);
    void beginAttempt(Order const &order);
    void endAttempt(Order const &order);
    void beginReplacement(std::uint64_t number);
    void adoptReplacement();
    void publish();
    void setTimer();

    Set makeSessions(RemoteShellOptions const &with);
    void adopt(Set set);
    void letSpareTakeOver();
    RemoteShell::Events eventsOf(std::shared_ptr<std::weak_ptr<SessionSet>> home, std::size_t place);
    ClientReport reportOfFirst() const;
    std::exception_ptr failureOf(Order const &ended) const;
    HostLife::Time now() const;
    [[noreturn]] void failAsLost(std::exception_ptr const &failure) const;

    // Constant after construction.
    EngineRuntime &engine;
    Strand const strand;
    std::string const sshProgram;
    SavedPasswords const savedPasswords;
    std::shared_ptr<LoginDesk> const loginDesk;
    std::shared_ptr<HostConfiguration> const configuration;
    std::string const host;
    RemoteShellOptions const options;

    // On the strand.
    HostLife life;
    Set sessions; ///< null before the first attempt
    ShellDialect dialect = ShellDialect::posix;
    bool isKeyStoreLocked = false;          ///< there is a password, and the user did not unlock it
    std::optional<Attempt> attempt;         ///< the last one
    std::optional<Replacement> replacement; ///< the last one
    /// Sessions of connections that were replaced while they carried work.
    std::vector<std::weak_ptr<RemoteShell>> leftBehind;
    std::vector<std::shared_ptr<Completion<Done>>> waitingForRoom; ///< long work that waits for its turn
    std::uint64_t lastAsked = 0;
    int connectionsBeside = 0;
    UpdateFanOut<HostStatus> subscribers;
    HostStatus published;
    std::optional<HostLife::Time> wakingAt;
    std::stop_source timer;
};

class HostSessions::Asked {
public:
    Asked(Self sessions, Choice choice, CommandEffect effect) : self(std::move(sessions))
    {
        if (choice != Choice::interactive)
            return;
        number = ++self->lastAsked;
        self->follow(self->life.asked(number, effect == CommandEffect::none, self->now()));
    }

    ~Asked() { self->life.settled(number); }

    Asked(Asked const &) = delete;
    Asked &operator=(Asked const &) = delete;

private:
    Self const self;
    std::uint64_t number = 0; ///< 0: no request has it
};

class HostSessions::Carried {
public:
    Carried(Self sessions, Set carrying, Role by, Choice choice)
        : self(std::move(sessions)), set(std::move(carrying)), role(by), isLong(choice == Choice::longWork)
    {
        auto &load = set->loadOf(role);
        ++load.requests;
        load.longOnes += isLong ? 1 : 0;
    }

    ~Carried()
    {
        auto &load = set->loadOf(role);
        --load.requests;
        load.longOnes -= isLong ? 1 : 0;
        if (isLong)
            self->announceRoom();
    }

    Carried(Carried const &) = delete;
    Carried &operator=(Carried const &) = delete;

private:
    Self const self;
    Set const set;
    Role const role;
    bool const isLong;
};

template <class T>
Task<T> HostSessions::askOnce(Self self, Task<T> question, CommandEffect effect)
{
    auto outcome = co_await outcomeOf(std::move(question));
    if (outcome.failure && effect == CommandEffect::changes)
        self->failAsLost(outcome.failure);
    co_return outcome.take();
}

template <class T>
Task<T> HostSessions::askingHere(Self self, Choice choice, std::function<Task<T>(RemoteShell &)> question,
                                 CommandEffect effect, CommandOnLoss onLoss)
{
    auto const endedBefore = self->life.endings();
    auto wasSent = false;
    for (auto rounds = 1;; ++rounds) {
        auto generation = self->life.generation();
        auto role = Role::first;
        try {
            Asked const asked(self, choice, effect);
            auto const target = co_await session(self, choice);
            generation = self->life.generation();
            role = target.role;
            auto answer = co_await askOnce(self, question(*target.shell), effect);
            co_return answer;
        } catch (RemoteShellError const &failure) {
            auto const isLost = dynamic_cast<RemoteShellError::Disconnected const *>(&failure) != nullptr;
            if (!failure.isRecoverableDrop() || (isLost && wasSent) || rounds == mostRounds ||
                self->life.endings() != endedBefore)
                throw;
            wasSent |= isLost;
        }
        if (!self->life.wasWanted())
            throw RemoteShellError::NotConnected();
        self->follow(self->life.sessionLost(role, generation, self->now()));
        if (onLoss == CommandOnLoss::fails)
            throw RemoteShellError::NotConnected();
        co_await beUp(self, Way::quiet);
    }
}

} // namespace tw
