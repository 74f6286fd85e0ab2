#pragma once

#include <functional>
#include <optional>
#include <string>

namespace tw {

/// How a session with a host finds out whether ssh is to be given a saved password, and by whom. By default no host has
/// one.
struct SavedPasswords {
    /// Blocks for some seconds at most: for a worker.
    std::function<bool(std::string const &host)> exists = {};
    /// The program that prints them when ssh asks, see Askpass.
    std::optional<std::string> helper = {};

    /// The key store of the session, and this very program.
    static SavedPasswords ofThisSession();

    /// The path of this program's own executable, if that file is there and can be run.
    static std::optional<std::string> ownExecutable();
};

} // namespace tw
