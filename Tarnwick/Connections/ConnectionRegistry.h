#pragma once

#include "TWEngine/Passwords/LoginDesk.h"
#include "TWEngine/SSH/SSHProvider.h"
#include "TWEngine/SSHConfig/SSHConfigOnDisk.h"
#include "Tarnwick/Connections/Connections.h"

#include <memory>
#include <string>

namespace tw {

class EngineRuntime;

/// Where a pane gets its Browser: exactly one for each connection, so that two panes on a host share one cache, one set
/// of sessions and one attempt to connect.
///
/// Threads: main context only; calls suspend while they wait for a connection.
/// Lifetime: the engine outlives it. It may be destroyed while a caller waits in `ssh`.
class ConnectionRegistry final : public Connections {
public:
    struct Collaborators {
        EngineRuntime &engine;
        std::shared_ptr<Executor> mainContext;
        /// The ssh client. Anything but the usual one is for tests, which cannot give ssh another home.
        std::string sshProgram = std::string(SSHCommandLine::program);
        ControlPath::Place sockets = ControlPath::Place::ofThisUser();
        SavedPasswords savedPasswords = {};
        /// To which the questions of a login go; null: ssh asks nobody.
        std::shared_ptr<LoginDesk> logins = nullptr;
        /// Where the listings of hosts are kept for the next start. Empty: they are not.
        std::string cacheDirectory = {};
        std::string sshConfig = {}; ///< Empty: this user's.
        /// What measures how long a host is unused; null is the engine's clock.
        std::shared_ptr<Clock> clock = nullptr;
    };

    /// A host that nobody has used for so long loses its ssh clients: with sixty hosts, most are only looked at once.
    static constexpr std::chrono::minutes unusedLimit{10};

    explicit ConnectionRegistry(Collaborators collaborators);
    ~ConnectionRegistry() override;

    ConnectionRegistry(ConnectionRegistry const &) = delete;
    ConnectionRegistry &operator=(ConnectionRegistry const &) = delete;

    std::shared_ptr<Browser> local() override;

    /// Connects for the first caller. A failure reaches all who waited; the next call tries anew. An attempt that
    /// nobody waits for any more is given up.
    Task<std::shared_ptr<Browser>> ssh(std::string host) override;

    Task<std::shared_ptr<Browser>> logIn(std::string host) override;

    Task<std::shared_ptr<Browser>> reach(std::string host) override;

    Task<KnownConnection> known(std::string host) override;

    Task<std::vector<std::string>> hosts() override;

    /// Cancels the attempts in flight, and returns when all their callers have their answer. No new attempt begins from
    /// then on: `ssh` and `reach` throw Cancelled for a host that is not up.
    Task<void> giveUpAttempts();

    /// Forgets every connection at once, ends those that are up, and then closes the store. Attempts in flight go on.
    Task<void> shutdownAll();

private:
    struct Shared;

    std::shared_ptr<Shared> const shared;
};

} // namespace tw
