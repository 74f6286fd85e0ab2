#pragma once

#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/e2e/ProgramTest.h"
#include "tests/hosts/DelayProxy.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/SSHHome.h"
#include "tests/hosts/TestHost.h"

#include <filesystem>

#include <pwd.h>
#include <unistd.h>

namespace tw::test {

/// The program with a host: a real sshd behind a line that can be cut, and the ssh that every user has.
///
///     remote/first/inner/  remote/second/of files/file
class HostTest : public ProgramTest {
protected:
    HostTest()
    {
        for (auto const *name : {"remote/first/inner", "remote/second/of files"})
            folder.folder(name);
        folder.file("remote/second/of files/file");
        client.add(alias, host.address().through(line.port()));
    }

    /// ssh asks the password database for the home folder, and gets one whose .ssh knows the host.
    Child::Environment environment() const override
    {
        auto changes = ProgramTest::environment();
        changes.merge(sshHome(folder, client.home()));
        return changes;
    }

    std::string remote(std::string const &name = {}) const { return at(name.empty() ? "remote" : "remote/" + name); }

    /// Where the user of this test is after a login on the host, which is this machine.
    static std::string loginFolder()
    {
        std::string home = ::getpwuid(::getuid())->pw_dir;
        return std::filesystem::exists(home) ? home : "/";
    }

    /// This machine on the left, the host on the right.
    Child startWithHost() const { return start({"--left", at("left"), "--right", alias + ":" + remote()}); }

    void expectBothPainted(Child &program) const
    {
        expectPainted(program, at("left"));
        expectPainted(program, remote());
    }

    /// Waits until there is a client on the line.
    void waitForAClient() const
    {
        line.waitUntil([](Traffic const &traffic) { return traffic.open > 0; });
    }

    // No other test, and no user, has a shared connection under this name.
    std::string const alias = "tarnwick-e2e-" + std::to_string(::getpid());
    EngineRuntime engine;
    TestHost host{engine};
    DelayProxy line{host.address().port, {}};
    SSHClient client;
};

} // namespace tw::test
