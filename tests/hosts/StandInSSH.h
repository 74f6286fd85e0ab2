#pragma once

#include "tests/support/TemporaryFolder.h"

#include <vector>

namespace tw::test {

/// A program to be run in place of ssh that needs no host: it runs the remote command on this machine with `sh -c`, and
/// fails on request in ways that a real host fails in by chance.
///
/// It parses the arguments of ssh and ignores all but the command. A request to control a shared connection (-O) fails.
///
/// Threads: for one thread.
/// Lifetime: outlives the processes that it starts.
class StandInSSH {
public:
    /// What happens after `afterBytes` of the output of the command.
    enum class Fault {
        none,
        refuse, ///< the command is not run
        cut,    ///< the connection is lost: the command and ssh end
        stall,  ///< no more output, and no end, until ssh is killed
        flood,  ///< `faultBytes` of garbage are inserted
        corrupt ///< `faultBytes` are inverted
    };

    struct Behaviour {
        Fault fault = Fault::none;
        std::size_t afterBytes = 0;
        std::size_t faultBytes = 0; ///< for flood and corrupt
        std::string preface = {};   ///< on standard output before everything else
        std::string message = {};   ///< on standard error when the fault happens, or at the start without a fault
        int exitCode = 255;         ///< for refuse and cut
        std::string home = {};      ///< the HOME of the command; empty: the HOME of this process
    };

    /// Has no fault before `behave`.
    StandInSSH();

    StandInSSH(StandInSSH const &) = delete;
    StandInSSH &operator=(StandInSSH const &) = delete;

    /// Applies from the next start on.
    void behave(Behaviour const &behaviour) const;

    /// The path of the program to be run in place of ssh.
    std::string const &program() const noexcept { return wrapper; }

    /// The arguments of all starts so far, in their order.
    std::vector<std::vector<std::string>> starts() const;

private:
    TemporaryFolder const folder;
    std::string const wrapper;
    std::string const startsFile;
};

} // namespace tw::test
