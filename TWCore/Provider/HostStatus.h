#pragma once

#include <chrono>

namespace tw {

/// What is known of the connection to a host, for a person who waits for it.
struct HostStatus {
    enum class Phase {
        notTried,
        reaching,        ///< until the key exchange is done
        loggingIn,       ///< the host is reached and asks who is there
        asking,          ///< the login waits for an answer of the user
        waitingForShell, ///< logged in; the shell has not answered yet
        up,
        silent, ///< up, but without an answer to what a person waits for
        lost,   ///< it was up and has ended; the next request connects again
        givenUp ///< the last attempt failed, or nobody waited for it any more
    };

    Phase phase = Phase::notTried;
    /// When the phase began. In `silent`: when the host was last heard.
    std::chrono::steady_clock::time_point since = {};

    friend bool operator==(HostStatus const &, HostStatus const &) = default;
};

} // namespace tw
