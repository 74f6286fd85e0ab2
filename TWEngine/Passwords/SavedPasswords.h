#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Passwords/SSHPassword.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tw {

class EngineRuntime;

/// How a session with a host gets a saved password or passphrase to ssh. By default nothing is saved.
struct SavedPasswords {
    /// See SSHPassword::find. The accounts are the host and the identity files with which ssh reaches it. Blocks for
    /// some seconds at most, so it belongs on a worker.
    std::function<SSHPassword::Found(std::vector<std::string> const &accounts)> find = {};
    /// Asks the user to unlock the key store, see UnlockPrompts. True if what is saved for the account can be read
    /// afterwards.
    std::function<Task<bool>(std::string account)> unlock = {};
    /// The program that prints what is saved when ssh asks for it, see Askpass.
    std::optional<std::string> helper = {};

    /// The key store of the session, and this very program. To be made once: it remembers which accounts
    /// were asked for.
    static SavedPasswords ofThisSession(EngineRuntime &engine);

    /// The path of this program's own executable, if that file exists and can be run.
    static std::optional<std::string> ownExecutable();
};

} // namespace tw
