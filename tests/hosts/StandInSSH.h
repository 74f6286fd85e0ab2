#pragma once

#include "tests/support/TemporaryFolder.h"

#include <vector>

namespace tw::test {

/// A program to be run in place of ssh that needs no host: it runs the remote command on this machine, by `sh -c`, and
/// can fail in ways that a real host fails in only by chance.
///
/// It understands the arguments of ssh and heeds none of them but the command. Asked to control a shared connection
/// (-O), it has none.
///
/// Threads: for one thread. Lifetime: outlives what it started.
class StandInSSH {
public:
    /// What happens to the output of the command, once `afterBytes` of it have been passed on.
    enum class Fault {
        none,
        refuse, ///< the command is not even run
        cut,    ///< the connection is lost: the command is ended, and so is ssh
        stall,  ///< nothing more comes, and nothing ends, until ssh is killed
        flood,  ///< so many bytes come in between that nobody has sent
        corrupt ///< so many bytes are turned into others
    };

    struct Behaviour {
        Fault fault = Fault::none;
        std::size_t afterBytes = 0;
        std::size_t faultBytes = 0; ///< for flood and corrupt
        std::string preface = {};   ///< on standard output before everything else
        std::string message = {};   ///< on standard error when the fault happens; without a fault at the beginning
        int exitCode = 255;         ///< of refuse and cut
        std::string home = {};      ///< the HOME of the command; empty: that of this process
    };

    /// Behaves well until it is told otherwise.
    StandInSSH();

    StandInSSH(StandInSSH const &) = delete;
    StandInSSH &operator=(StandInSSH const &) = delete;

    /// From the next start on.
    void behave(Behaviour const &behaviour) const;

    /// The path of what is run in place of ssh.
    std::string const &program() const noexcept { return wrapper; }

    /// The arguments of each start so far, in their order.
    std::vector<std::vector<std::string>> starts() const;

private:
    TemporaryFolder const folder;
    std::string const wrapper;
    std::string const startsFile;
};

} // namespace tw::test
