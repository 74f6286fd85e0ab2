#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/ProcessTree.h"
#include "tests/hosts/WaitFor.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {

namespace fs = std::filesystem;

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

/// scripts/demo-host, in a home folder of the test's own.
class DemoHostTest : public testing::Test {
protected:
    EngineRuntime engine;
    TemporaryFolder const home;
    std::string const configPath = home.path(".ssh/config");
    std::string const samples = home.path(".local/state/Tarnwick/demo-host/samples");

    void TearDown() override { demoHost("stop"); }

    CommandOutcome demoHost(std::string const &command)
    {
        auto environment = inheritedEnvironment();
        environment.erase("XDG_STATE_HOME");
        environment["TARNWICK_DEMO_HOME"] = home.path();
        return runCommand(engine.io(),
                          {.program = TARNWICK_DEMO_HOST, .arguments = {command}, .environment = environment});
    }

    /// With no samples in their folder, which it takes for made: making them takes longer than all the rest.
    CommandOutcome start()
    {
        home.folder(".local/state/Tarnwick/demo-host/samples");
        return demoHost("start");
    }

    ChildCommand ssh(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {"-F", configPath, "-o", "BatchMode=yes"});
        return {.program = "ssh", .arguments = std::move(arguments)};
    }

    CommandOutcome runSSH(std::vector<std::string> arguments)
    {
        return runCommand(engine.io(), ssh(std::move(arguments)));
    }

    void writeConfig(std::string_view content) const
    {
        home.folder(".ssh");
        home.file(".ssh/config", content);
    }

    std::string config() const { return contentOf(configPath); }
};

void expectSuccess(CommandOutcome const &outcome)
{
    EXPECT_TRUE(outcome.status.isSuccess()) << outcome.error;
    EXPECT_EQ(outcome.error, "");
}

unsigned modeOf(std::string const &path)
{
    return static_cast<unsigned>(fs::status(path).permissions());
}

TEST_F(DemoHostTest, itIsReachedByItsNameAndHasSamples)
{
    auto const started = demoHost("start");
    expectSuccess(started);
    EXPECT_EQ(started.output, "tarnwick-demo:" + samples + '\n');

    auto const listed = runSSH({"tarnwick-demo", "find '" + samples + "' -type f | wc -l"});
    expectSuccess(listed);
    EXPECT_GT(std::stoi(listed.output), 300);
}

TEST_F(DemoHostTest, startingTwiceIsStartingOnce)
{
    start();
    auto const configBefore = config();
    auto const statusBefore = demoHost("status");

    auto const again = start();
    expectSuccess(again);
    EXPECT_EQ(again.output, "tarnwick-demo:" + samples + '\n');
    EXPECT_EQ(config(), configBefore);
    EXPECT_EQ(demoHost("status").output, statusBefore.output);
}

TEST_F(DemoHostTest, stoppingWhatDoesNotRunIsFine)
{
    expectSuccess(demoHost("stop"));
    EXPECT_FALSE(fs::exists(home.path(".ssh")));
}

TEST_F(DemoHostTest, theStatusTellsWhetherItRuns)
{
    EXPECT_EQ(demoHost("status").status.number, 3);
    start();
    EXPECT_EQ(demoHost("status").status.number, 0);
    demoHost("stop");
    EXPECT_EQ(demoHost("status").status.number, 3);
}

TEST_F(DemoHostTest, whatItMakesIsForTheUserAlone)
{
    demoHost("start");

    EXPECT_EQ(modeOf(home.path(".ssh")), 0700U);
    EXPECT_EQ(modeOf(configPath), 0600U);
    EXPECT_EQ(modeOf(home.path(".local/state/Tarnwick/demo-host")), 0700U);
}

TEST_F(DemoHostTest, stopRemovesAllOfIt)
{
    demoHost("start");
    expectSuccess(demoHost("stop"));

    EXPECT_FALSE(fs::exists(home.path(".ssh")));
    EXPECT_FALSE(fs::exists(home.path(".local/state/Tarnwick")));
}

TEST_F(DemoHostTest, stopEndsThoseWhoAreLoggedIn)
{
    start();
    auto command = ssh({"tarnwick-demo", "echo in; exec cat"});
    command.input = PipeEnd();
    command.output = PipeEnd();
    auto const staying = *ChildProcess::start(engine.io(), command);
    EXPECT_EQ(waitFor(staying->read(ChildOutput::standard)), "in\n");

    demoHost("stop");
    EXPECT_EQ(waitFor(staying->wait()).number, 255);
}

TEST_F(DemoHostTest, aFolderThatWasThereStays)
{
    home.folder(".ssh");
    start();
    demoHost("stop");

    EXPECT_TRUE(fs::is_empty(home.path(".ssh")));
}

TEST_F(DemoHostTest, theUsersConfigurationIsRestoredByteForByte)
{
    using namespace std::string_view_literals;
    for (auto const original :
         {""sv, "Host old\n    Port 99\n"sv, "Host old\n    Port 99"sv, "Host old\r\n  Port 99\r\n"sv,
          "\n\n# last words\n\n"sv, "Host old\n\nInclude other\n\nMatch user x\n    Port 1\n"sv,
          "# a byte \0 and \xff\n"sv}) {
        writeConfig(original);
        expectSuccess(start());
        EXPECT_THAT(config(), HasSubstr("Host tarnwick-demo\n"));
        EXPECT_THAT(config(), EndsWith(std::string(original)));
        expectSuccess(demoHost("stop"));
        EXPECT_EQ(config(), original);
    }
}

TEST_F(DemoHostTest, aLinkedConfigurationStaysALinkAndKeepsItsPermissions)
{
    home.folder(".ssh");
    auto const target = home.file("my settings", "Host old\n");
    fs::permissions(target, static_cast<fs::perms>(0640));
    home.link(".ssh/config", "../my settings");

    start();
    EXPECT_TRUE(fs::is_symlink(configPath));
    EXPECT_THAT(contentOf(target), HasSubstr("Host tarnwick-demo\n"));
    EXPECT_EQ(modeOf(target), 0640U);
    demoHost("stop");
    EXPECT_TRUE(fs::is_symlink(configPath));
    EXPECT_EQ(contentOf(target), "Host old\n");
    EXPECT_EQ(modeOf(target), 0640U);
}

TEST_F(DemoHostTest, aLinkToNothingIsOneAgainAfterwards)
{
    home.folder(".ssh");
    home.link(".ssh/config", "elsewhere");

    start();
    EXPECT_THAT(config(), HasSubstr("Host tarnwick-demo\n"));
    demoHost("stop");
    EXPECT_TRUE(fs::is_symlink(configPath));
    EXPECT_FALSE(fs::exists(configPath));
}

TEST_F(DemoHostTest, theUsersOtherHostsMeanWhatTheyMeant)
{
    writeConfig("ServerAliveInterval 77\nHost other\n    Port 99\n");
    start();

    EXPECT_THAT(runSSH({"-G", "whichever"}).output, HasSubstr("\nserveraliveinterval 77\n"));
    EXPECT_THAT(runSSH({"-G", "other"}).output, HasSubstr("\nport 99\n"));
    EXPECT_THAT(runSSH({"-G", "other"}).output, Not(HasSubstr("demo-host")));
}

TEST_F(DemoHostTest, whatTheUserSetsForAllHostsDoesNotKeepItFromWorking)
{
    writeConfig("Host *\n    Port 1\n    User nobody-here\n    ProxyCommand false\n    StrictHostKeyChecking no\n"
                "    IdentityFile /nowhere\n    UserKnownHostsFile /dev/null\n");
    start();

    auto const outcome = runSSH({"tarnwick-demo", "echo in"});
    EXPECT_EQ(outcome.output, "in\n") << outcome.error;
}

TEST_F(DemoHostTest, whatTheUserWritesMeanwhileStays)
{
    start();
    home.file(".ssh/config", "# above\n" + config() + "# below");
    expectSuccess(start());
    expectSuccess(demoHost("stop"));

    EXPECT_EQ(config(), "# above\n# below");
}

TEST_F(DemoHostTest, aBlockWithoutItsEndIsLeftToTheUser)
{
    start();
    auto const whole = config();
    auto const damaged = whole.substr(0, whole.rfind("# <<<"));
    home.file(".ssh/config", damaged);
    auto const outcome = demoHost("stop");

    EXPECT_FALSE(outcome.status.isSuccess());
    EXPECT_THAT(outcome.error, HasSubstr("has no end"));
    EXPECT_EQ(config(), damaged);
    home.file(".ssh/config", whole);
}

TEST_F(DemoHostTest, itComesBackAfterTheServerWasKilled)
{
    start();
    auto const configBefore = config();
    auto const server = recordOf(std::stoi(contentOf(home.path(".local/state/Tarnwick/demo-host/pid"))));
    ASSERT_TRUE(server);
    killAndWait(*server);

    expectSuccess(start());
    EXPECT_EQ(config(), configBefore);
    EXPECT_EQ(runSSH({"tarnwick-demo", "echo in"}).output, "in\n");
}

TEST_F(DemoHostTest, anUnknownCommandIsRefused)
{
    auto const outcome = demoHost("begin");

    EXPECT_EQ(outcome.status.number, 2);
    EXPECT_THAT(outcome.error, HasSubstr("usage"));
}

} // namespace

} // namespace tw::test
