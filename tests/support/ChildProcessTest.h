#pragma once

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/IoThread.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include <sys/types.h>

namespace tw::test {

using ChildHandle = std::shared_ptr<ChildProcess>;

/// The rest of the output of the child.
Task<std::string> restOf(ChildHandle child, ChildOutput output);

/// The children of this process, dead or alive, that are not collected.
std::set<pid_t> childrenOfOurs();

/// Tests that run real programs. None may leave a child behind.
class ChildProcessTest : public ::testing::Test {
protected:
    ~ChildProcessTest() override;

    /// Starts a command. Fails the test if that fails.
    ChildHandle start(ChildCommand const &command);

    /// A shell that runs `script`, with pipes at all ends.
    ChildHandle startShell(std::string script);

    /// `cat`, with pipes for input and output.
    ChildHandle startCat();

    /// The whole output of a command. Fails the test unless the command succeeds.
    std::string outputOf(ChildCommand command);

    /// The error of a command that cannot be started.
    SpawnError refusalOf(ChildCommand const &command);

    std::string read(ChildHandle const &child) { return loop.run(child->read(ChildOutput::standard)); }

    std::string readAll(ChildHandle const &child) { return loop.run(restOf(child, ChildOutput::standard)); }

    ExitStatus wait(ChildHandle const &child) { return loop.run(child->wait()); }

    static ExitStatus exited(int code) { return {.cause = ExitStatus::Cause::exited, .number = code}; }

    static ExitStatus killed(int signal) { return {.cause = ExitStatus::Cause::killed, .number = signal}; }

    /// True if there is a child that did not exist at the beginning of the test; another test may keep a server
    /// running.
    bool hasChildren() const { return childrenOfOurs() != childrenBefore; }

    std::set<pid_t> const childrenBefore = childrenOfOurs();
    std::unique_ptr<IoThread> io = std::make_unique<IoThread>();
    TestLoop loop;
};

} // namespace tw::test
