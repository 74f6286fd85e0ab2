#pragma once

#include "tests/hosts/HostAddress.h"
#include "tests/hosts/HostLog.h"
#include "tests/hosts/KeyPair.h"
#include "tests/support/TemporaryFolder.h"

#include <memory>
#include <string>
#include <vector>

namespace tw {
class ChildProcess;
class EngineRuntime;
} // namespace tw

namespace tw::test {

/// A host that takes no keys, on loopback. Whoever knows the password gets in and runs commands of this machine.
///
/// Threads: for one thread. Lifetime: outlived by the runtime; when it goes, all that it has started has ended.
class PasswordHost {
public:
    struct Options {
        std::string password = {};
        /// The words in which it asks; empty: it lets the client find them.
        std::string prompt = {};
    };

    PasswordHost(EngineRuntime &runtime, Options options);
    ~PasswordHost();

    PasswordHost(PasswordHost const &) = delete;
    PasswordHost &operator=(PasswordHost const &) = delete;

    HostAddress address() const;

    /// What it was told for a password so far, in the order in which it came.
    std::vector<std::string> tries() const;

private:
    TemporaryFolder const folder;
    KeyPair const hostKey;
    KeyPair const userKey;
    HostLog output;
    std::shared_ptr<ChildProcess> server;
    std::uint16_t port = 0;
};

/// A program that reads saved passwords and starts ssh, see tests/hosts/programs/password_program.cpp.
std::string passwordProgram();

} // namespace tw::test
