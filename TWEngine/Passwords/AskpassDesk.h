#pragma once

#include "TWEngine/Passwords/AskpassGuard.h"
#include "TWEngine/Passwords/LoginDesk.h"
#include "TWEngine/Passwords/LoginKeyStore.h"
#include "TWEngine/Passwords/LoginPrompter.h"
#include "TWEngine/Runtime/Strand.h"

#include <optional>
#include <semaphore>
#include <vector>

#include <sys/types.h>

namespace tw {

class AskpassLogin;
class EngineRuntime;

/// The desk at which the askpass program calls: for each login a socket in a private folder of the user.
///
/// A question is answered to a process of this user that knows the token of the login and that an ssh started by this
/// very process has started. What the key store has is tried first, once.
///
/// Threads: serialised on its own strand; every operation may be called from anywhere.
/// Lifetime: shared; the engine outlives it and its logins.
class AskpassDesk final : public LoginDesk, public std::enable_shared_from_this<AskpassDesk> {
public:
    struct Collaborators {
        EngineRuntime &engine;
        std::shared_ptr<Executor> mainContext; ///< on which the prompter is called
        std::shared_ptr<LoginPrompter> prompter;
        /// The program that ssh starts to ask, see Askpass; nothing: it can ask nobody.
        std::optional<std::string> helper;
        /// Where the sockets are made: a private folder, or nothing if there is none.
        std::function<std::optional<std::string>()> folder;
        LoginKeyStore keyStore = {};
        /// What stands between this process and a caller. Anything but the usual answer is for tests, which call
        /// themselves.
        std::function<AskpassGuard::Caller(pid_t caller)> callerOf = callerBelowUs;
    };

    explicit AskpassDesk(Collaborators collaborators);

    Task<std::unique_ptr<Login>> begin(std::string host, Reports reports) override;

    /// Ends every login, so that no socket file stays behind. For the end of the program: blocks for a moment, and is
    /// called after our clients were ended, since an ssh without an answer sends its host an empty password.
    void endAll();

    static AskpassGuard::Caller callerBelowUs(pid_t caller);

private:
    using Self = std::shared_ptr<AskpassDesk>;

    static Task<std::unique_ptr<Login>> beginHere(Self self, std::string host, Reports reports);
    static Task<void> endHere(Self self, std::shared_ptr<std::binary_semaphore> done);

    // Constant after construction.
    Collaborators const with;
    Strand const strand;

    // On the strand.
    std::vector<std::weak_ptr<AskpassLogin>> logins;
};

} // namespace tw
