#pragma once

#include "tests/hosts/HostAddress.h"
#include "tests/support/TemporaryFolder.h"

#include <map>

namespace tw::test {

/// The ssh client of a user who has nothing but the hosts that a test gives him.
///
/// OpenSSH takes the user's home from the password database and not from HOME, so there is a program of its own to be
/// run in place of ssh: it runs the real one with this user's configuration and nobody else's. Whether connections are
/// shared, and whether ssh may ask, is left to the caller's own options.
class SSHClient {
public:
    /// What the user knows of a host's key.
    enum class Knowledge {
        right,  ///< it is on record
        none,   ///< no key is on record, as before the first visit
        another ///< a different key is on record, as after the host was set up anew
    };

    SSHClient();

    SSHClient(SSHClient const &) = delete;
    SSHClient &operator=(SSHClient const &) = delete;

    /// Makes a host known under a name, from the next start of ssh on. The same name again replaces it.
    void add(std::string const &alias, HostAddress const &host, Knowledge knowledge = Knowledge::right);

    /// The path of what is run in place of ssh, with the arguments of ssh.
    std::string const &program() const noexcept { return wrapper; }

    /// The user's home folder; its .ssh is what the program uses.
    std::string home() const { return folder.path("home"); }

private:
    std::string configuration() const;
    std::string knownHostsFile(std::string const &alias) const;

    TemporaryFolder const folder;
    std::string const configurationFile;
    std::string const wrapper;
    std::map<std::string, HostAddress> hosts;
};

} // namespace tw::test
