#pragma once

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Provider/HostCommand.h"
#include "TWEngine/Passwords/SavedPasswords.h"
#include "TWEngine/Runtime/SharedTask.h"
#include "TWEngine/SSH/SSHCommandLine.h"
#include "TWEngine/Shell/RemoteShell.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tw {

class EngineRuntime;

/// The three sessions with one host, and how they come up, are lost and come up again.
///
/// A session answers strictly in order, so each kind of request has its own: what a person waits for, what runs behind,
/// and work, which changes something or takes long. The first session comes up with `connect`, each other one when it
/// is first needed. A host that refuses the others serves everything over the first.
///
/// Threads: not serialised; all of it runs on the strand that it was made with.
/// Lifetime: shared; the engine outlives it. It is disconnected before it is dropped.
/// Cancellation: connecting is given up with the caller that began it; a question that was sent is waited for.
/// Errors: RemoteShellError. What is in flight at a disconnect fails with Disconnected and is not asked again.
class HostSessions : public std::enable_shared_from_this<HostSessions> {
public:
    struct Collaborators {
        EngineRuntime &engine;
        Strand strand;
        std::string sshProgram;
        /// Asked when the sessions are made.
        SavedPasswords savedPasswords = {};
    };

    /// Which session a request is for.
    enum class Choice {
        interactive,
        background,
        backgroundIfReady, ///< the first one if there is no second
        work
    };

    /// Starts nothing. `options` are complete.
    HostSessions(Collaborators collaborators, std::string host, RemoteShellOptions options);

    /// Connects the first session and finds out what the host speaks, unless that is known.
    Task<void> connect();

    /// Ends the first two sessions and connects the first again. Callers at the same time share one reconnection and
    /// its outcome. Work goes on: a copy of an hour must not die of a loss elsewhere.
    Task<void> reconnect();

    /// Ends all sessions. A later connect does not ask again what the host speaks.
    Task<void> disconnect();

    /// Asks a session, and once more after a reconnection if the session turns out to be lost. A question with an
    /// effect is never asked a second time once it was sent; then OutcomeUnknown is thrown.
    template <class T>
    Task<T> asking(Choice choice, std::function<Task<T>(RemoteShell &)> question,
                   CommandEffect effect = CommandEffect::none)
    {
        return askingHere(shared_from_this(), choice, std::move(question), effect);
    }

    /// Null before the first connect.
    std::shared_ptr<RemoteShell> interactiveShell() const { return interactive; }

    ShellDialect speaks() const { return dialect; }

    /// How often `disconnect` was called: what was begun before the last time is not wanted any more.
    std::uint64_t disconnections() const { return timesEnded; }

    /// What a task fails with that a disconnect has ended.
    [[noreturn]] static void failAsShutDown();

private:
    using Self = std::shared_ptr<HostSessions>;
    using Shell = std::shared_ptr<RemoteShell>;

    template <class T>
    static Task<T> askingHere(Self self, Choice choice, std::function<Task<T>(RemoteShell &)> question,
                              CommandEffect effect);
    template <class T>
    static Task<T> askOnce(Self self, Task<T> question, CommandEffect effect);
    static Task<Shell> session(Self self, Choice choice);
    static Task<Shell> backgroundSession(Self self, Choice choice);
    static Task<Shell> workSession(Self self);
    static Task<void> connectHere(Self self);
    static Task<void> connectOnce(Self self);
    static Task<void> connectFirst(Self self);
    /// Adds a locked key store to the error of `attempt`.
    static Task<void> namingLockedKeyStore(Self self, Task<void> attempt);
    /// The options, with the askpass program if a password is saved for the host. Unlocks the key store for it.
    static Task<RemoteShellOptions> sessionOptions(Self self);
    static Task<void> reconnectHere(Self self);
    static Task<void> reconnectOnce(Self self);
    static Task<void> disconnectHere(Self self);
    static Task<void> comeUp(Self self, Task<void> attempt, std::stop_token giveUp);
    static Task<void> connectBackground(Self self);

    void makeSessions(ShellDialect speaking, RemoteShellOptions const &with);
    [[noreturn]] void failAsLost(std::exception_ptr const &failure) const;

    // Constant after construction.
    EngineRuntime &engine;
    Strand const strand;
    std::string const sshProgram;
    SavedPasswords const savedPasswords;
    std::string const host;
    RemoteShellOptions const options;

    // On the strand.
    Shell interactive;
    Shell background;
    Shell work;
    bool backgroundReady = false;
    ShellDialect dialect = ShellDialect::posix;
    bool isKeyStoreLocked = false; ///< there is a password, and the user did not unlock it
    /// Brings the first session up, and does not return before it is up or has failed.
    std::optional<SharedTask<void>> comingUp;
    /// The same for the second; stays when it is done. Nothing: it has not been needed since the last reconnection.
    std::optional<SharedTask<void>> backgroundComing;
    std::optional<SharedTask<void>> workComing;
    std::uint64_t timesUp = 0; ///< how often the first session has come up
    std::uint64_t timesEnded = 0;
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
                                 CommandEffect effect)
{
    auto const context = co_await currentContext();
    auto const upBefore = self->timesUp;
    auto const endedBefore = self->timesEnded;
    try {
        auto const shell = co_await session(self, choice);
        auto answer = co_await askOnce(self, question(*shell), effect);
        co_return answer;
    } catch (RemoteShellError const &failure) {
        if (!failure.isRecoverableDrop() || self->timesEnded != endedBefore)
            throw;
    }
    if (context.stop.stop_requested())
        throw Cancelled();
    // Another request may have found the same loss and reconnected before this one learned of it. The session for work
    // comes up by itself.
    auto const isForFirstTwo = choice != Choice::work || self->timesUp == 0;
    if (isForFirstTwo && self->timesUp == upBefore)
        co_await reconnectHere(self);
    auto const shell = co_await session(self, choice);
    auto answer = co_await askOnce(self, question(*shell), effect);
    co_return answer;
}

} // namespace tw
