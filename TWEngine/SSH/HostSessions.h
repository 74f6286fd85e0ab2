#pragma once

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "TWEngine/Passwords/SavedPasswords.h"
#include "TWEngine/Runtime/SharedTask.h"
#include "TWEngine/Shell/RemoteShell.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tw {

class EngineRuntime;

/// The two sessions with one host, and how they come up, are lost and come up again.
///
/// Two, since a session answers strictly in order: a deep scan on the one that a person waits on would stand before the
/// listing that is waited for.
///
/// Threads: not serialised; all of it runs on the strand that it was made with.
/// Lifetime: shared; the engine outlives it. It is disconnected before it is dropped.
/// Cancellation: connecting is given up with the caller that began it; a question that was sent is waited for.
/// Errors: RemoteShellError. What is under way at a disconnect fails with Disconnected and is not asked again.
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
    enum class Choice { interactive, background, backgroundIfReady };

    /// Starts nothing. `options` are complete; `probe` are the arguments of the client that asks what the host speaks.
    HostSessions(Collaborators collaborators, std::string host, RemoteShellOptions options,
                 std::function<SSHCommandLine::Arguments()> probe);

    /// Finds out what the host speaks, unless that is known, and connects the first session. The second comes up behind
    /// it; until then what is for the second waits. Without the second, scans ahead go over the first; a command that
    /// was meant for the second is a loss, and has both connected again.
    Task<void> connect();

    /// Ends both sessions and connects them again. Callers at the same time share one reconnection and its outcome.
    Task<void> reconnect();

    /// Ends both sessions. A later connect does not ask again what the host speaks.
    Task<void> disconnect();

    /// Asks a session, and once more after a reconnection if it turns out to be lost.
    template <class T>
    Task<T> asking(Choice choice, std::function<Task<T>(RemoteShell &)> question)
    {
        return askingHere(shared_from_this(), choice, std::move(question));
    }

    /// Null before the first connect.
    std::shared_ptr<RemoteShell> interactiveShell() const { return interactive; }

    ShellDialect speaks() const { return dialect; }

    /// How often we were told to disconnect: what was begun before the last time is not wanted any more.
    std::uint64_t disconnections() const { return timesEnded; }

    /// What a task fails with that a disconnect has ended.
    [[noreturn]] static void failAsShutDown();

private:
    using Self = std::shared_ptr<HostSessions>;
    using Shell = std::shared_ptr<RemoteShell>;

    template <class T>
    static Task<T> askingHere(Self self, Choice choice, std::function<Task<T>(RemoteShell &)> question);
    static Task<Shell> session(Self self, Choice choice);
    static Task<void> connectHere(Self self);
    static Task<void> connectOnce(Self self);
    static Task<void> askWhatItSpeaks(Self self);
    /// The options, with who answers ssh if a password is saved for the host.
    static Task<RemoteShellOptions> sessionOptions(Self self);
    static Task<void> reconnectHere(Self self);
    static Task<void> reconnectOnce(Self self);
    static Task<void> disconnectHere(Self self);
    static Task<void> comeUp(Self self, Task<void> attempt, std::stop_token giveUp);
    static Task<void> connectBackground(Self self);

    void makeSessions(RemoteShellOptions const &with);
    void startBackground();

    // Constant after construction.
    EngineRuntime &engine;
    Strand const strand;
    std::string const sshProgram;
    SavedPasswords const savedPasswords;
    std::string const host;
    RemoteShellOptions const options;
    std::function<SSHCommandLine::Arguments()> const probe;

    // On the strand.
    Shell interactive;
    Shell background;
    bool backgroundReady = false;
    ShellDialect dialect = ShellDialect::posix;
    /// Brings the first session up, and does not return before it is up or has failed.
    std::optional<SharedTask<void>> comingUp;
    std::optional<SharedTask<void>> backgroundComing; ///< the same for the second; stays when it is done
    std::uint64_t timesUp = 0;                        ///< how often the first session has come up
    std::uint64_t timesEnded = 0;
};

template <class T>
Task<T> HostSessions::askingHere(Self self, Choice choice, std::function<Task<T>(RemoteShell &)> question)
{
    auto const context = co_await currentContext();
    auto const upBefore = self->timesUp;
    auto const endedBefore = self->timesEnded;
    try {
        auto const shell = co_await session(self, choice);
        auto answer = co_await question(*shell);
        co_return answer;
    } catch (RemoteShellError const &failure) {
        if (!failure.isRecoverableDrop() || self->timesEnded != endedBefore)
            throw;
    }
    if (context.stop.stop_requested())
        throw Cancelled();
    // Another request may have found the same loss, and mended it before this one heard of it.
    if (self->timesUp == upBefore)
        co_await reconnectHere(self);
    auto const shell = co_await session(self, choice);
    auto answer = co_await question(*shell);
    co_return answer;
}

} // namespace tw
