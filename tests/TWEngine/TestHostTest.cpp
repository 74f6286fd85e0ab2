#include "tests/hosts/TestHost.h"

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/DelayProxy.h"
#include "tests/hosts/Loopback.h"
#include "tests/hosts/ProcessTree.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/WaitFor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <system_error>

#include <unistd.h>

namespace tw::test {

using namespace std::chrono_literals;

namespace {

using testing::HasSubstr;

constexpr ExitStatus success{.cause = ExitStatus::Cause::exited, .number = 0};
/// What ssh ends with when it is not the command that failed.
constexpr ExitStatus connectionFailed{.cause = ExitStatus::Cause::exited, .number = 255};

class TestHostTest : public testing::Test {
protected:
    EngineRuntime engine;
    SSHClient client;

    CommandOutcome ssh(std::string alias, std::string command, std::string input = {})
    {
        return runCommand(engine.io(),
                          {.program = client.program(), .arguments = {std::move(alias), std::move(command)}},
                          std::move(input));
    }

    /// An ssh that has logged in and goes on until its input ends or its connection does.
    std::shared_ptr<ChildProcess> sshThatStays(std::vector<std::string> arguments)
    {
        arguments.emplace_back("echo ready; exec cat");
        auto process = *ChildProcess::start(
            engine.io(),
            {.program = client.program(), .arguments = std::move(arguments), .input = PipeEnd(), .output = PipeEnd()});
        EXPECT_EQ(waitFor(process->read(ChildOutput::standard)), "ready\n");
        return process;
    }
};

bool isRefused(std::uint16_t port)
{
    try {
        connectToLoopback(port);
        return false;
    } catch (std::system_error const &error) {
        return error.code() == std::errc::connection_refused;
    }
}

TEST_F(TestHostTest, aCommandRunsOnTheHost)
{
    TestHost const host(engine);
    client.add("host", host.address());
    auto const outcome = ssh("host", "cat; echo \"$SSH_CONNECTION\"; exit 3", "sent\n");

    EXPECT_THAT(outcome.output, testing::StartsWith("sent\n127.0.0.1 "));
    EXPECT_THAT(outcome.output, testing::EndsWith(" 127.0.0.1 " + std::to_string(host.address().port) + '\n'));
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.status, (ExitStatus{.cause = ExitStatus::Cause::exited, .number = 3}));
}

TEST_F(TestHostTest, theHomeFolderIsTheHostsOwn)
{
    TestHost const host(engine);
    client.add("host", host.address());

    EXPECT_EQ(ssh("host", "cd && pwd").output, host.home() + '\n');
}

TEST_F(TestHostTest, severalHostsRunAtOnceForOneClient)
{
    TestHost const first(engine);
    TestHost const second(engine);
    client.add("first", first.address());
    client.add("second", second.address());

    EXPECT_NE(first.address().hostKey, second.address().hostKey);
    EXPECT_EQ(ssh("first", "echo ~").output, first.home() + '\n');
    EXPECT_EQ(ssh("second", "echo ~").output, second.home() + '\n');
}

TEST_F(TestHostTest, aHostCanBeFarAway)
{
    TestHost const host(engine);
    DelayProxy const proxy(host.address().port, 2ms);
    client.add("far", host.address().through(proxy.port()));

    EXPECT_EQ(ssh("far", "true").status, success);
    EXPECT_EQ(proxy.traffic().connections, 1U);
    EXPECT_GT(proxy.traffic().towardsClient.delivered, 0U);
}

TEST_F(TestHostTest, aCutEndsTheClientAndNotTheServer)
{
    TestHost host(engine);
    client.add("host", host.address());
    auto const staying = sshThatStays({"host"});
    EXPECT_EQ(host.connections(), 1U);

    host.cut();
    EXPECT_EQ(waitFor(staying->wait()), connectionFailed);
    EXPECT_EQ(host.connections(), 0U);
    EXPECT_EQ(ssh("host", "true").status, success);
}

TEST_F(TestHostTest, aCutByTheProxyEndsTheClient)
{
    TestHost const host(engine);
    DelayProxy proxy(host.address().port, 0ms);
    client.add("far", host.address().through(proxy.port()));
    auto const staying = sshThatStays({"far"});

    proxy.cut(Ending::reset);
    EXPECT_EQ(waitFor(staying->wait()), connectionFailed);
}

TEST_F(TestHostTest, aStoppedHostRefusesAndEndsItsClients)
{
    TestHost host(engine);
    client.add("host", host.address());
    auto const staying = sshThatStays({"host"});

    host.stop();
    EXPECT_EQ(waitFor(staying->wait()), connectionFailed);
    EXPECT_EQ(host.connections(), 0U);
    auto const refused = ssh("host", "true");
    EXPECT_EQ(refused.status, connectionFailed);
    EXPECT_THAT(refused.error, HasSubstr("Connection refused"));
}

TEST_F(TestHostTest, aRestartedHostIsTheSameHost)
{
    TestHost host(engine);
    client.add("host", host.address());

    host.stop();
    host.start();
    auto const outcome = ssh("host", "echo again");
    EXPECT_EQ(outcome.output, "again\n");
    EXPECT_EQ(outcome.error, "");
}

TEST_F(TestHostTest, startingAndStoppingTwiceIsDoingItOnce)
{
    TestHost host(engine);
    client.add("host", host.address());
    host.start();
    EXPECT_EQ(ssh("host", "true").status, success);
    host.stop();
    host.stop();
    EXPECT_TRUE(isRefused(host.address().port));
}

TEST_F(TestHostTest, whatClientsLeaveRunningEndsWithTheHost)
{
    TestHost host(engine);
    client.add("host", host.address());
    auto const left = std::stoi(ssh("host", "sleep 1000 <&- >/dev/null 2>&1 & echo $!").output);
    EXPECT_TRUE(recordOf(left));

    host.cut();
    EXPECT_TRUE(recordOf(left));
    host.stop();
    EXPECT_FALSE(recordOf(left));
}

TEST_F(TestHostTest, nothingIsLeftBehind)
{
    auto host = std::make_unique<TestHost>(engine);
    auto const address = host->address();
    auto const home = host->home();
    client.add("host", address);
    auto const staying = sshThatStays({"host"});

    host.reset();
    waitFor(staying->wait());
    EXPECT_TRUE(descendantsOf(::getpid()).empty());
    EXPECT_TRUE(isRefused(address.port));
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(home).parent_path()));
}

TEST_F(TestHostTest, aConnectionIsSharedIfTheCallerWantsIt)
{
    TestHost const host(engine);
    client.add("host", host.address());
    TemporaryFolder const folder;
    auto const socket = folder.path("control");
    auto const owner = sshThatStays({"-o", "ControlMaster=yes", "-S", socket, "host"});
    auto const guest = sshThatStays({"-S", socket, "host"});

    EXPECT_EQ(host.connections(), 1U);
}

TEST_F(TestHostTest, theBannerIsShownBeforeTheLogin)
{
    TestHost const host(engine, {.banner = "Authorised users only\n"});
    client.add("host", host.address());
    auto const outcome = ssh("host", "echo in");

    EXPECT_THAT(outcome.error, HasSubstr("Authorised users only"));
    EXPECT_EQ(outcome.output, "in\n");
}

TEST_F(TestHostTest, aHostCanRefuseTheKeyAndChangeItsMind)
{
    TestHost host(engine, {.login = TestHost::Login::refused});
    client.add("host", host.address());

    auto const refused = ssh("host", "true");
    EXPECT_EQ(refused.status, connectionFailed);
    EXPECT_THAT(refused.error, HasSubstr("Permission denied (publickey)"));
    host.setLogin(TestHost::Login::accepted);
    EXPECT_EQ(ssh("host", "true").status, success);
}

TEST_F(TestHostTest, anUnknownHostIsNotTrusted)
{
    TestHost const host(engine);
    client.add("host", host.address(), SSHClient::Knowledge::none);
    auto const outcome = ssh("host", "true");

    EXPECT_EQ(outcome.status, connectionFailed);
    EXPECT_THAT(outcome.error, HasSubstr("Host key verification failed"));
}

TEST_F(TestHostTest, aHostWithAnotherKeyIsNotTrusted)
{
    TestHost const host(engine);
    client.add("host", host.address());
    client.add("changed", host.address(), SSHClient::Knowledge::another);
    auto const outcome = ssh("changed", "true");

    EXPECT_EQ(outcome.status, connectionFailed);
    EXPECT_THAT(outcome.error, HasSubstr("REMOTE HOST IDENTIFICATION HAS CHANGED"));
    EXPECT_EQ(ssh("host", "true").status, success);
}

TEST_F(TestHostTest, theLogTellsWhatHappened)
{
    TestHost host(engine);
    client.add("host", host.address());
    auto const before = host.log().size();
    ssh("host", "true");

    EXPECT_TRUE(host.log().waitFor("Accepted publickey", before));
    host.stop();
    EXPECT_FALSE(host.log().waitFor("words that it never says", 0));
}

} // namespace

} // namespace tw::test
