#pragma once

#include "tests/hosts/HostAddress.h"
#include "tests/hosts/HostLog.h"
#include "tests/hosts/KeyPair.h"
#include "tests/hosts/SeparationFolder.h"
#include "tests/support/TemporaryFolder.h"

#include <optional>

namespace tw::test {

/// A host: a real sshd on a port of 127.0.0.1, run by and for the user who runs the test.
///
/// One temporary folder holds all its files: configuration, keys, and the home folder of its users. Only the shell, and
/// the folder in which a command starts, are those of the real user. It reads no configuration of this machine, asks
/// for no password, and keeps its port while it exists, also while it is stopped.
///
/// Threads: for one thread, which outlives it: the host ends with the thread. All operations block until they have
/// taken effect. Lifetime: the engine outlives it. The destructor ends every process that it has started, also those
/// that clients have left running in the background. Errors: std::runtime_error, with the log of sshd if there is one.
class TestHost {
public:
    /// Whether the right key is accepted.
    enum class Login { accepted, refused };

    struct Options {
        Login login = Login::accepted;
        std::string banner = {}; ///< shown by the client before the login
        /// A script that runs in place of every command, with the command in SSH_ORIGINAL_COMMAND; see LoginScripts.h.
        /// Without a script, the shell of the user runs the command.
        std::string loginScript = {};
    };

    /// The host runs when this returns.
    explicit TestHost(EngineRuntime &engine);
    TestHost(EngineRuntime &engine, Options options);
    ~TestHost();

    TestHost(TestHost const &) = delete;
    TestHost &operator=(TestHost const &) = delete;

    HostAddress address() const;

    /// The home folder of its users.
    std::string home() const { return folder.path("home"); }

    /// Their temporary folder: that of the machine holds what other programs left there.
    std::string temporary() const { return folder.path("tmp"); }

    /// Applies to later logins.
    void setLogin(Login login);

    /// Ends all connections and leaves their processes running, like a lost line.
    void cut();

    /// Ends all connections, their processes, and the server. The port refuses connections from then on.
    void stop();

    /// Starts the host again after `stop`, with the same port and key.
    void start();

    /// The number of connections, also of those that are not logged in yet.
    std::size_t connections() const;

    HostLog const &log() const noexcept { return output; }

private:
    std::string configuration() const;
    void endEverythingBelow();
    bool isFrozenWithNothingBelow();

    // Constant after construction.
    EngineRuntime &engine;
    Options const options;
    TemporaryFolder const folder;
    std::optional<SeparationFolder> separation;
    FileDescriptor const reservation;
    KeyPair const hostKey;
    KeyPair const userKey;

    HostLog output;
    /// Null while the host is stopped.
    std::shared_ptr<ChildProcess> listener;
};

} // namespace tw::test
