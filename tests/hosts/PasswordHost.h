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

/// A host on loopback that refuses keys. A client with the password may run commands on this machine.
///
/// Threads: for one thread.
/// Lifetime: the runtime outlives it. The destructor ends every process that it has started.
class PasswordHost {
public:
    struct Options {
        std::string password = {};
        /// The words of its question; empty: the client chooses the words.
        std::string prompt = {};
    };

    PasswordHost(EngineRuntime &runtime, Options options);
    ~PasswordHost();

    PasswordHost(PasswordHost const &) = delete;
    PasswordHost &operator=(PasswordHost const &) = delete;

    HostAddress address() const;

    /// The passwords that clients have sent so far, in their order; each is there before its client has the answer.
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
