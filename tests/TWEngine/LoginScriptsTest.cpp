#include "tests/hosts/LoginScripts.h"

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/TestHost.h"
#include "tests/hosts/WaitFor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace tw::test {

namespace {

class LoginScriptsTest : public testing::Test {
protected:
    EngineRuntime engine;
    SSHClient client;
    std::optional<TestHost> host;

    void runHostWith(std::string script)
    {
        host.emplace(engine, TestHost::Options{.loginScript = std::move(script)});
        client.add("host", host->address());
    }

    CommandOutcome ssh(std::string command, std::string input = {})
    {
        return runCommand(engine.io(), {.program = client.program(), .arguments = {"host", std::move(command)}},
                          std::move(input));
    }
};

TEST_F(LoginScriptsTest, noiseComesBeforeWhatTheCommandSays)
{
    runHostWith(loginWithNoise());
    auto const outcome = ssh("exec bash -s", "echo MARK\n");

    EXPECT_THAT(outcome.output, testing::StartsWith("Welcome!\n"));
    EXPECT_THAT(outcome.output, testing::EndsWith("no end of lineMARK\n"));
    EXPECT_THAT(outcome.error, testing::HasSubstr("Inappropriate ioctl"));
}

TEST_F(LoginScriptsTest, aHostWithoutBashHasWhatScriptsCommonlyCall)
{
    runHostWith(loginWithoutBash());

    EXPECT_EQ(ssh("exec bash -s").status, (ExitStatus{.cause = ExitStatus::Cause::exited, .number = 127}));
    EXPECT_EQ(ssh("printf 'a\\n' | sed s/a/b/ | cat").output, "b\n");
}

TEST_F(LoginScriptsTest, anotherShellKnowsQuotesAndWordsOnly)
{
    runHostWith(loginWithAnotherShell());

    EXPECT_EQ(ssh("sh -c 'x=$(echo quoted) && echo $x 2>&1'").output, "quoted\n");
    EXPECT_EQ(ssh("exec bash -s", "echo $((6 * 7))\n").output, "42\n");
    for (auto const *const command : {"x=1; echo $x", "echo $(echo no)", "echo no 2>&1", "if true; then echo no; fi",
                                      "{ echo no; }", "export X", "sh -c 'echo\nno'"}) {
        auto const outcome = ssh(command);
        EXPECT_EQ(outcome.output, "") << command;
        EXPECT_NE(outcome.error, "") << command;
        EXPECT_FALSE(outcome.status.isSuccess()) << command;
    }
}

TEST_F(LoginScriptsTest, garbageHasAllBytes)
{
    runHostWith(loginWithGarbage());
    auto const output = ssh("echo asked").output;

    EXPECT_EQ(output.size(), 65536U);
    EXPECT_EQ(std::set<char>(output.begin(), output.end()).size(), 256U);
}

TEST_F(LoginScriptsTest, aFloodHasNoLines)
{
    runHostWith(loginWithFlood(300'000));

    EXPECT_TRUE(ssh("echo asked").output == std::string(300'000, 'x'));
}

TEST_F(LoginScriptsTest, aHostBreaksOffInTheMiddleAlthoughTheClientGoesOn)
{
    runHostWith(loginThatBreaksOff(1000));
    auto const process = *ChildProcess::start(
        engine.io(),
        {.program = client.program(), .arguments = {"host", "exec bash -s"}, .input = PipeEnd(), .output = PipeEnd()});
    waitFor(process->write("printf '%02000d' 7\n"));
    std::string all;
    for (std::string piece = "more"; !piece.empty();) {
        piece = waitFor(process->read(ChildOutput::standard));
        all += piece;
    }
    waitFor(process->wait());

    EXPECT_EQ(all, std::string(1000, '0'));
}

TEST_F(LoginScriptsTest, aSilentHostEndsWhenTheClientGivesUp)
{
    runHostWith(loginWithoutAnswer());
    auto const outcome = ssh("echo asked", "input");

    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(outcome.status.isSuccess());
}

} // namespace

} // namespace tw::test
