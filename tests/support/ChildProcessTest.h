#pragma once

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/IoThread.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include <sys/types.h>

namespace tw::test {

using Child = std::shared_ptr<ChildProcess>;

/// Everything that the child still writes to that end.
Task<std::string> restOf(Child child, ChildOutput output);

/// The children of this process, dead or alive, that were not collected.
std::set<pid_t> childrenOfOurs();

/// Tests that run real programs. None may leave a child behind.
class ChildProcessTest : public ::testing::Test {
protected:
    ~ChildProcessTest() override;

    /// Fails the test if it does not start.
    Child start(ChildCommand const &command);

    /// `script` for a shell, with pipes at all ends.
    Child startShell(std::string script);

    /// `cat`, with pipes for input and output.
    Child startCat();

    /// Its whole output; it has ended well.
    std::string outputOf(ChildCommand command);

    /// Why it does not start.
    SpawnError refusalOf(ChildCommand const &command);

    std::string read(Child const &child) { return loop.run(child->read(ChildOutput::standard)); }

    std::string readAll(Child const &child) { return loop.run(restOf(child, ChildOutput::standard)); }

    ExitStatus wait(Child const &child) { return loop.run(child->wait()); }

    static ExitStatus exited(int code) { return {.cause = ExitStatus::Cause::exited, .number = code}; }

    static ExitStatus killed(int signal) { return {.cause = ExitStatus::Cause::killed, .number = signal}; }

    /// Whether there is a child that was not there when the test began; another test may have a server running.
    bool hasChildren() const { return childrenOfOurs() != childrenBefore; }

    std::set<pid_t> const childrenBefore = childrenOfOurs();
    std::unique_ptr<IoThread> io = std::make_unique<IoThread>();
    TestLoop loop;
};

} // namespace tw::test
