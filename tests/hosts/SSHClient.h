#pragma once

#include "tests/hosts/HostAddress.h"
#include "tests/support/TemporaryFolder.h"

#include <map>

namespace tw::test {

/// The ssh client of a user who knows only the hosts of a test.
///
/// OpenSSH takes the home folder of the user from the password database and ignores HOME. So there is a script to be
/// run in place of ssh: it runs the real ssh with the configuration of this user only. The caller's options decide
/// whether connections are shared and whether ssh may ask.
class SSHClient {
public:
    /// The key of a host that the user knows.
    enum class Knowledge {
        right,  ///< the key of the host
        none,   ///< no key, as before the first visit
        another ///< a different key, as after a new installation of the host
    };

    SSHClient();

    SSHClient(SSHClient const &) = delete;
    SSHClient &operator=(SSHClient const &) = delete;

    /// Adds a host under a name, from the next start of ssh on. Replaces a host of the same name. `more` are further
    /// lines of its configuration.
    void add(std::string const &alias, HostAddress const &host, Knowledge knowledge = Knowledge::right,
             std::string const &more = {});

    /// The path of the program to be run in place of ssh, with the arguments of ssh.
    std::string const &program() const noexcept { return wrapper; }

    /// The home folder of the user; the program uses the .ssh in it.
    std::string home() const { return folder.path("home"); }

private:
    std::string configuration() const;
    std::string knownHostsFile(std::string const &alias) const;

    TemporaryFolder const folder;
    std::string const configurationFile;
    std::string const wrapper;
    std::map<std::string, std::string> hosts; ///< the configuration of each
};

} // namespace tw::test
