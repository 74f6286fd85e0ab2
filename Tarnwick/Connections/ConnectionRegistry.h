#pragma once

#include "TWEngine/SSH/SSHProvider.h"
#include "TWEngine/SSHConfig/SSHConfigOnDisk.h"
#include "Tarnwick/Connections/Connections.h"

#include <memory>
#include <string>

namespace tw {

class EngineRuntime;

/// Where a pane gets its Browser: exactly one for each connection, so that two panes on a host share one cache and one
/// pair of sessions, and one attempt to connect.
///
/// Threads: main context only; calls suspend while they wait for a connection.
/// Lifetime: the engine outlives it. It may go while somebody waits in `ssh`.
class ConnectionRegistry final : public Connections {
public:
    struct Collaborators {
        EngineRuntime &engine;
        std::shared_ptr<Executor> mainContext;
        /// The ssh client. Anything but the usual one is for tests, which cannot give ssh another home.
        std::string sshProgram = std::string(SSHCommandLine::program);
        ControlPath::Place sockets = ControlPath::Place::ofThisUser();
        SavedPasswords savedPasswords = {};
        /// Where the listings of hosts are kept for the next start. Empty: they are not.
        std::string cacheDirectory = {};
        std::string sshConfig = SSHConfigOnDisk::pathOfThisUser();
    };

    explicit ConnectionRegistry(Collaborators collaborators);
    ~ConnectionRegistry() override;

    ConnectionRegistry(ConnectionRegistry const &) = delete;
    ConnectionRegistry &operator=(ConnectionRegistry const &) = delete;

    std::shared_ptr<Browser> local() override;

    /// Connects for the first caller. A failure reaches all who waited; the next call tries anew.
    Task<std::shared_ptr<Browser>> ssh(std::string host) override;

    Task<std::shared_ptr<Browser>> reach(std::string host) override;

    Task<std::vector<std::string>> hosts() override;

    /// Gives up the attempts that are under way, and ends when nobody waits for one any more. From now on none begins:
    /// who asks for a host that is not up gets Cancelled.
    Task<void> giveUpAttempts();

    /// Takes down every connection that is up, and then the store. They are gone from here at once. Attempts are left
    /// alone.
    Task<void> shutdownAll();

private:
    struct Shared;

    std::shared_ptr<Shared> const shared;
};

} // namespace tw
