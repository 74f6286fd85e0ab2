#pragma once

#include "TWEngine/Runtime/SystemClock.h"
#include "TWEngine/SSH/SSHCommandLine.h"
#include "TWEngine/Shell/RemoteShell.h"
#include "tests/hosts/StandInSSH.h"
#include "tests/support/ChildProcessTest.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace tw::test {

/// Tests of sessions with this machine over a stand-in for ssh. No test may leave a process or a descriptor behind.
class RemoteShellTest : public ChildProcessTest {
protected:
    using Shell = std::shared_ptr<RemoteShell>;

    void SetUp() override
    {
        // The first sleep opens descriptors that all timers and pipes share.
        loop.run(SystemClock(*io).sleep(std::chrono::nanoseconds(1)));
        openAtFirst = openDescriptors();
    }

    void TearDown() override
    {
        for (auto const &shell : std::exchange(shells, {}))
            loop.run(shell->shutdown());
        nothingIsLeft();
    }

    Shell makeShell(RemoteShellOptions options = {}, std::string program = {})
    {
        auto client =
            SSHCommandLine::sessionClient(program.empty() ? standIn.program() : program,
                                          SSHCommandLine::session(options, "host", ShellDialect::posix), options);
        return shells.emplace_back(std::make_shared<RemoteShell>(
            RemoteShell::Collaborators{
                .strand = Strand(loop.context()), .io = *io, .clock = clock, .client = std::move(client)},
            "host", std::move(options), ShellDialect::posix));
    }

    Shell connected(RemoteShellOptions options = {})
    {
        auto shell = makeShell(std::move(options));
        loop.run(shell->connect());
        return shell;
    }

    /// An ssh that is a script for bash.
    std::string program(std::string const &script)
    {
        auto const path = scripts.file("ssh" + std::to_string(++programs), "#!/bin/bash\n" + script);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        return path;
    }

    CommandResult run(Shell const &shell, std::string command)
    {
        return loop.run(shell->run(std::move(command), std::nullopt));
    }

    RemoteShell::State stateOf(Shell const &shell) { return loop.run(shell->state()); }

    /// The error of a connection attempt.
    std::string connectFailure(Shell const &shell) { return connectFailure(loop.start(shell->connect())); }

    std::string connectFailure(Started<void> const &connecting)
    {
        loop.runUntil([&] { return connecting.isDone(); });
        try {
            connecting.value();
        } catch (RemoteShellError::ConnectFailed const &failure) {
            EXPECT_EQ(failure.host, "host");
            return failure.detail;
        }
        return "it came up";
    }

    /// The error of a request that fails because the session ends.
    template <class T>
    std::string lossOf(Started<T> const &asked)
    {
        loop.runUntil([&] { return asked.isDone(); });
        try {
            asked.value();
        } catch (RemoteShellError::Disconnected const &failure) {
            return failure.detail;
        }
        return "it was answered";
    }

    /// A command that kills the ssh of the session, and so fails all requests in flight. The resident shell is a child
    /// of a login shell, which is a child of ssh.
    static std::string endOfTheClient() { return "kill -KILL $(cut -d' ' -f4 /proc/$PPID/stat)"; }

    /// Releases the sessions without ending them.
    void dropAll() { shells.clear(); }

    /// Waits for processes that end in the background.
    void nothingIsLeft()
    {
        SystemClock real(*io);
        while (hasChildren() || openDescriptors() > openAtFirst)
            loop.run(real.sleep(std::chrono::milliseconds(1)));
        loop.drain();
    }

    static std::size_t openDescriptors()
    {
        return static_cast<std::size_t>(std::ranges::distance(std::filesystem::directory_iterator("/proc/self/fd")));
    }

    StandInSSH standIn;
    TemporaryFolder folder;
    std::shared_ptr<Clock> clock = std::make_shared<SystemClock>(*io);

private:
    TemporaryFolder const scripts;
    std::vector<Shell> shells;
    int programs = 0;
    std::size_t openAtFirst = 0;
};

} // namespace tw::test
