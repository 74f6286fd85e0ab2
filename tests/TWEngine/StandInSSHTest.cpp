#include "tests/hosts/StandInSSH.h"

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/WaitFor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <signal.h>

namespace tw::test {

namespace {

using Fault = StandInSSH::Fault;
using testing::ElementsAre;

class StandInSSHTest : public testing::Test {
protected:
    EngineRuntime engine;
    StandInSSH standIn;

    CommandOutcome run(std::vector<std::string> arguments, std::string input = {})
    {
        return runCommand(engine.io(), {.program = standIn.program(), .arguments = std::move(arguments)},
                          std::move(input));
    }

    CommandOutcome runOnHost(std::string command, std::string input = {})
    {
        return run({"host", std::move(command)}, std::move(input));
    }
};

ExitStatus exited(int code)
{
    return {.cause = ExitStatus::Cause::exited, .number = code};
}

TEST_F(StandInSSHTest, theCommandRunsOnThisMachine)
{
    auto const outcome = runOnHost("echo out; echo err >&2; exit 3");

    EXPECT_EQ(outcome.output, "out\n");
    EXPECT_EQ(outcome.error, "err\n");
    EXPECT_EQ(outcome.status, exited(3));
}

TEST_F(StandInSSHTest, aShellReadsWhatIsSent)
{
    EXPECT_EQ(runOnHost("exec bash -s", "echo $((6 * 7))\n").output, "42\n");
}

TEST_F(StandInSSHTest, theArgumentsOfSSHAreUnderstood)
{
    auto const outcome = run({"-T", "-o", "BatchMode=yes", "-oControlMaster=auto", "-qp", "22", "-l", "somebody",
                              "host", "-x", "--", "echo", "-n", "two  words"});

    EXPECT_EQ(outcome.output, "two words");
}

TEST_F(StandInSSHTest, aMissingCommandIsAShell)
{
    EXPECT_EQ(run({"host"}, "echo here\n").output, "here\n");
}

TEST_F(StandInSSHTest, thereIsNoSharedConnection)
{
    EXPECT_EQ(run({"-O", "check", "-S", "/nowhere", "host"}).status, exited(255));
}

TEST_F(StandInSSHTest, everyStartIsRecorded)
{
    runOnHost("true");
    run({"-o", "A B", "", "host", "echo"});

    EXPECT_THAT(standIn.starts(),
                ElementsAre(ElementsAre("host", "true"), ElementsAre("-o", "A B", "", "host", "echo")));
}

TEST_F(StandInSSHTest, theHomeOfTheHostCanBeAnother)
{
    standIn.behave({.home = "/some where"});

    EXPECT_EQ(runOnHost("echo $HOME").output, "/some where\n");
}

TEST_F(StandInSSHTest, wordsBeforeTheCommand)
{
    standIn.behave({.preface = "Welcome to 'host'\n", .message = "a warning\n"});
    auto const outcome = runOnHost("echo done");

    EXPECT_EQ(outcome.output, "Welcome to 'host'\ndone\n");
    EXPECT_EQ(outcome.error, "a warning\n");
    EXPECT_EQ(outcome.status, exited(0));
}

TEST_F(StandInSSHTest, aRefusedConnectionRunsNothing)
{
    standIn.behave({.fault = Fault::refuse, .message = "Connection refused\n"});
    auto const outcome = runOnHost("echo done");

    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.error, "Connection refused\n");
    EXPECT_EQ(outcome.status, exited(255));
}

TEST_F(StandInSSHTest, aCutEndsTheCommandInTheMiddle)
{
    standIn.behave({.fault = Fault::cut, .afterBytes = 5, .message = "closed by remote host\n", .exitCode = 7});
    auto const outcome = runOnHost("echo $$; exec cat /dev/zero");

    EXPECT_EQ(outcome.output.size(), 5U);
    EXPECT_EQ(outcome.error, "closed by remote host\n");
    EXPECT_EQ(outcome.status, exited(7));
}

TEST_F(StandInSSHTest, aCutBeforeTheFirstByteNeedsNoOutput)
{
    standIn.behave({.fault = Fault::cut});

    EXPECT_EQ(runOnHost("exec sleep 1000").status, exited(255));
}

TEST_F(StandInSSHTest, aStallPassesNothingMoreAndDoesNotEnd)
{
    standIn.behave({.fault = Fault::stall, .afterBytes = 4, .message = "!"});
    auto const process = *ChildProcess::start(engine.io(), {.program = standIn.program(),
                                                            .arguments = {"host", "printf 'seen never'"},
                                                            .output = PipeEnd(),
                                                            .error = PipeEnd()});
    // What it says at the fault comes behind what it passes on.
    EXPECT_EQ(waitFor(process->read(ChildOutput::error)), "!");
    process->kill();

    EXPECT_EQ(waitFor(process->read(ChildOutput::standard)), "seen");
    EXPECT_EQ(waitFor(process->read(ChildOutput::standard)), "");
    EXPECT_EQ(waitFor(process->wait()).number, SIGKILL);
}

TEST_F(StandInSSHTest, aFloodComesInBetween)
{
    standIn.behave({.fault = Fault::flood, .afterBytes = 2, .faultBytes = 100'000});

    EXPECT_EQ(runOnHost("printf abcd").output, "ab" + std::string(100'000, 'x') + "cd");
}

TEST_F(StandInSSHTest, bytesAreCorruptedAcrossPieces)
{
    standIn.behave({.fault = Fault::corrupt, .afterBytes = 2, .faultBytes = 3});

    EXPECT_EQ(runOnHost("printf ab; printf c; printf de; printf f").output, "ab\x9c\x9b\x9a"
                                                                            "f");
}

TEST_F(StandInSSHTest, aFaultBehindTheEndDoesNotHappen)
{
    standIn.behave({.fault = Fault::cut, .afterBytes = 100});
    auto const outcome = runOnHost("echo done");

    EXPECT_EQ(outcome.output, "done\n");
    EXPECT_EQ(outcome.status, exited(0));
}

} // namespace

} // namespace tw::test
