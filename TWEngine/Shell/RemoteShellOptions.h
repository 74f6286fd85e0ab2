#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>

namespace tw {

/// How a session with a host is run.
struct RemoteShellOptions {
    /// Who opens the connection that clients share.
    enum class Sharing {
        ours, ///< the first client that needs it; it is kept for `controlPersist`
        users ///< the user has opened it: clients use it and never open it
    };

    /// For reaching the host, and for its resident script to answer.
    std::chrono::duration<double> connectTimeout = std::chrono::seconds(10);
    /// For a login, without the time in which the user is asked: a directory service or a slow disk may stand behind
    /// it.
    std::chrono::seconds loginTimeout{60};
    /// For the shell of a host that is logged in to: a start file may wait for something too.
    std::chrono::seconds shellTimeout{60};
    /// For a request that has no limit of its own.
    std::chrono::duration<double> requestTimeout = std::chrono::seconds(60);
    /// How often ssh asks a silent host whether it is there. After three questions without an answer it gives up.
    std::chrono::seconds keepAliveInterval{15};
    bool compression = true;
    /// At which a listing is cut on the host.
    std::size_t maxResponseBytes = 8U << 20U;

    /// The socket through which connections to the host are shared, see ControlPath; absent: nothing is shared.
    std::optional<std::string> controlPath = {};
    Sharing sharing = Sharing::ours;
    /// How long a shared connection outlives its last user.
    std::chrono::seconds controlPersist{60};

    /// The program that ssh asks for the password, and the account that it looks up. Without both, ssh asks nobody.
    std::optional<std::string> askpassHelper = {};
    std::optional<std::string> askpassAccount = {};
    /// With which ssh asks the user, see LoginDesk::Login; empty: ssh does not. For the client that logs in, and no
    /// later one: it ends with the login. Comes before a saved password, which the login looks up itself.
    std::map<std::string, std::string> loginEnvironment = {};

    /// The client is OpenSSH 8.7 or later: it knows SessionType, StdinNull and ForkAfterAuthentication.
    bool knowsSessionType = false;

    friend bool operator==(RemoteShellOptions const &, RemoteShellOptions const &) = default;
};

} // namespace tw
