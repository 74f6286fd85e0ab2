#pragma once

#include "TWEngine/Passwords/AskpassGuard.h"
#include "TWEngine/Passwords/LoginDesk.h"
#include "TWEngine/Passwords/LoginDialogue.h"
#include "TWEngine/Passwords/LoginKeyStore.h"
#include "TWEngine/Passwords/LoginPrompter.h"
#include "TWEngine/Runtime/ChildPipe.h"
#include "TWEngine/Runtime/LocalListener.h"
#include "TWEngine/Runtime/Strand.h"

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace tw {

class EngineRuntime;

/// One login at an AskpassDesk: answers the askpass programs that call at its socket.
///
/// Threads: runs on the strand that it was made with; `end` and `succeed` may be called from anywhere.
/// Lifetime: shared; keeps itself alive from `start` to `end`.
class AskpassLogin : public std::enable_shared_from_this<AskpassLogin> {
public:
    using CallerOf = std::function<AskpassGuard::Caller(pid_t)>;

    struct Collaborators {
        EngineRuntime &engine;
        Strand strand;
        std::shared_ptr<Executor> mainContext;
        std::shared_ptr<LoginPrompter> prompter;
        LoginKeyStore keyStore;
        std::unique_ptr<LocalListener> listener;
        LoginDesk::Reports reports;
        CallerOf callerOf;
    };

    AskpassLogin(Collaborators collaborators, std::string host, std::string token, Environment environment);

    /// Takes callers from now on.
    void start();

    /// Ends every question and removes the socket. Does nothing the second time.
    void end();

    /// Stores what is to be remembered. May be followed by `end` at once.
    void succeed();

    Environment const &environment() const noexcept { return variables; }

private:
    using Self = std::shared_ptr<AskpassLogin>;
    using Line = std::shared_ptr<ChildPipe>;
    using Asker = LoginDialogue::Asker;

    static Task<void> listen(Self self);
    static Task<void> serve(Self self, Line line, Asker asker);
    static Task<std::optional<LoginAnswer>> answerOf(Self self, Line line, LoginQuestion question, Asker asker);
    static Task<std::optional<LoginAnswer>> askUser(Self self, Line line, LoginQuestion question);
    static Task<void> store(Self self);

    /// Nothing if the caller gets no answer.
    std::optional<Asker> askerOf(LocalListener::Caller const &caller) const;
    void refuse(LoginDesk::Refusal why);

    // Constant after construction.
    Collaborators const with;
    std::string const token;
    Environment const variables;
    std::stop_source over; ///< safe from any thread

    // On the strand.
    LoginDialogue dialogue;
    int callers = 0;
    int openQuestions = 0;
    bool isRefused = false;
};

} // namespace tw
