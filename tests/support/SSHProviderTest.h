#pragma once

#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/SSHProvider.h"
#include "tests/hosts/DelayProxy.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/TestHost.h"
#include "tests/support/ChildProcessTest.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace tw::test {

/// Tests of a provider with a host, over a line that can be cut and that counts bytes.
class SSHProviderTest : public testing::Test {
protected:
    using Provider = std::shared_ptr<SSHProvider>;

    ~SSHProviderTest() override
    {
        for (auto const &provider : std::exchange(providers, {}))
            loop.run(provider->disconnect());
        line.reset();
        host.reset();
        while (childrenOfOurs() != childrenBefore)
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
    }

    /// Adds the host as "host", behind a line with that round trip.
    void reach(TestHost::Options options = {}, std::chrono::nanoseconds roundTrip = {})
    {
        host = std::make_unique<TestHost>(engine, std::move(options));
        line = std::make_unique<DelayProxy>(host->address().port, roundTrip);
        client.add("host", host->address().through(line->port()));
    }

    Provider makeProvider(std::string name = "host", RemoteShellOptions options = {})
    {
        return keep(std::make_shared<SSHProvider>(
            SSHProvider::Collaborators{.engine = engine, .sshProgram = sshProgram(), .sockets = sockets},
            std::move(name), std::move(options)));
    }

    /// Disconnects the provider at the end of the test.
    Provider keep(Provider provider) { return providers.emplace_back(std::move(provider)); }

    Provider connected(RemoteShellOptions options = {})
    {
        auto provider = makeProvider("host", std::move(options));
        loop.run(provider->connect());
        return provider;
    }

    /// A connection attempt on a line that delivers no reply.
    Started<void> connectInVain(Provider const &provider)
    {
        line->stall();
        auto connecting = loop.start(provider->connect());
        loop.drain();
        line->waitUntil([](Traffic const &traffic) { return traffic.connections == 1; });
        return connecting;
    }

    virtual std::string sshProgram() const { return client.program(); }

    std::string run(Provider const &provider, std::string command, CommandSession session = CommandSession::interactive)
    {
        return loop.run(provider->runCommand({.text = std::move(command), .session = session})).output;
    }

    /// The process id of the shell that serves a session.
    std::string shellOf(Provider const &provider, CommandSession session) { return run(provider, "echo $$", session); }

    /// The error of a connection attempt.
    std::string connectFailure(Provider const &provider) { return failureOf<void>(loop.start(provider->connect())); }

    template <class T>
    std::string failureOf(Started<T> const &asked)
    {
        loop.runUntil([&] { return asked.isDone(); });
        try {
            asked.value();
        } catch (RemoteShellError::ConnectFailed const &failure) {
            return failure.detail;
        } catch (std::exception const &failure) {
            return failure.what();
        }
        return "it succeeded";
    }

    template <class T>
    void finish(Started<T> const &asked)
    {
        loop.runUntil([&] { return asked.isDone(); });
    }

    std::set<pid_t> const childrenBefore = childrenOfOurs();
    EngineRuntime engine;
    TestLoop loop;
    SSHClient client;
    TemporaryFolder folder; ///< on the host, which is this machine
    TemporaryFolder local;
    TemporaryFolder socketBase;
    ControlPath::Place sockets{.base = socketBase.path(), .user = ::getuid()};
    std::unique_ptr<TestHost> host;
    std::unique_ptr<DelayProxy> line;

private:
    std::vector<Provider> providers;
};

} // namespace tw::test
