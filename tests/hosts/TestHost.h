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
/// Everything that it has lies in one temporary folder: configuration, keys, and the home folder of those who log in.
/// Only the shell, and the folder in which a command starts, are those of the real user. It reads no configuration of
/// this machine, asks for no password, and keeps its port for as long as it exists, whether or not it runs.
///
/// Threads: for one thread, which outlives it: when it ends, so does the host. All operations block until they have
/// taken effect.
/// Lifetime: outlived by the engine. The destructor ends everything that it has started, what clients have left
/// running in the background included.
/// Errors: std::runtime_error, with the log of sshd where there is one.
class TestHost {
public:
    /// Whether those who come with the right key are let in.
    enum class Login { accepted, refused };

    struct Options {
        Login login = Login::accepted;
        std::string banner = {}; ///< what the client shows before the login
        /// A script that is run in place of every command, and finds the command in SSH_ORIGINAL_COMMAND; see
        /// LoginScripts.h. Without one the command is run by the user's shell.
        std::string loginScript = {};
    };

    /// Runs when this returns.
    explicit TestHost(EngineRuntime &engine);
    TestHost(EngineRuntime &engine, Options options);
    ~TestHost();

    TestHost(TestHost const &) = delete;
    TestHost &operator=(TestHost const &) = delete;

    HostAddress address() const;

    /// The home folder of those who log in.
    std::string home() const { return folder.path("home"); }

    /// For those who log in from now on.
    void setLogin(Login login);

    /// Ends all connections, and leaves what was run over them to itself, as a lost line does.
    void cut();

    /// Ends all connections, what was run over them, and the server. The port refuses from then on.
    void stop();

    /// Runs again after `stop`, on the same port and with the same key.
    void start();

    /// How many connections there are, those that are not logged in yet included.
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
    /// Null while it is stopped.
    std::shared_ptr<ChildProcess> listener;
};

} // namespace tw::test
