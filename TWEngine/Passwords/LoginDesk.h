#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Runtime/ChildCommand.h"

#include <functional>
#include <memory>
#include <string>

namespace tw {

/// Passes the questions of a client of ours that logs in to the user.
///
/// Threads: every operation may be called from anywhere.
class LoginDesk {
public:
    /// The questions of one client, from before its start until it is logged in or has failed.
    ///
    /// Lifetime: the destructor ends them. A question that is open leaves the screen, and ssh gets no answer.
    class Login {
    public:
        virtual ~Login() = default;

        /// What the client's environment needs beside ours. It holds a secret of this login, so it belongs in no
        /// argument and no log.
        virtual Environment const &environment() const = 0;

        /// The client is logged in: stores the answers that the user wants to be remembered.
        virtual void succeed() = 0;
    };

    enum class Refusal {
        byUser, ///< the user does not want to answer
        byHost  ///< three answers were not accepted
    };

    /// What is reported of a login. Called on a strand, so each function passes the news on and returns. A report that
    /// is in flight when the login is destroyed may still arrive.
    struct Reports {
        std::function<void()> questionOpened = {}; ///< the user has something to do
        std::function<void()> questionClosed = {}; ///< follows each `questionOpened`
        /// The last report: no question is answered any more. ssh still waits for an answer, so that it sends the host
        /// nothing more: the owner of the login ends the client.
        std::function<void(Refusal)> refused = {};
    };

    virtual ~LoginDesk() = default;

    /// Begins the login to `host`. Null if ssh can ask nobody, as without a private folder for the socket.
    virtual Task<std::unique_ptr<Login>> begin(std::string host, Reports reports) = 0;
};

} // namespace tw
