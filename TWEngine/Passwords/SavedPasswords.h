#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Passwords/SSHPassword.h"

#include <functional>
#include <optional>
#include <string>

namespace tw {

class EngineRuntime;

/// How a session with a host gets a saved password to ssh. By default no host has a saved password.
struct SavedPasswords {
    /// Blocks for some seconds at most, so it belongs on a worker.
    std::function<SSHPassword::Presence(std::string const &host)> presence = {};
    /// Asks the user to unlock the key store, see UnlockPrompts. True if the password can be read afterwards.
    std::function<Task<bool>(std::string host)> unlock = {};
    /// The program that prints a password when ssh asks for it, see Askpass.
    std::optional<std::string> helper = {};

    /// The key store of the session, and this very program. To be made once: it remembers which hosts
    /// were asked for.
    static SavedPasswords ofThisSession(EngineRuntime &engine);

    /// The path of this program's own executable, if that file exists and can be run.
    static std::optional<std::string> ownExecutable();
};

} // namespace tw
