#include "tests/hosts/TestHost.h"

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/Loopback.h"
#include "tests/hosts/ProcessTree.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/WaitFor.h"

#include <gtest/gtest.h>

#include <system_error>

#include <unistd.h>

namespace tw::test {

namespace {

constexpr ExitStatus success{.cause = ExitStatus::Cause::exited, .number = 0};
/// What ssh ends with when it is not the command that failed.
constexpr ExitStatus connectionFailed{.cause = ExitStatus::Cause::exited, .number = 255};

/// What other tests take for granted: a cut cuts, and nothing stays behind.
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

} // namespace

} // namespace tw::test
