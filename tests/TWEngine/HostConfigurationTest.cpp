#include "TWEngine/SSH/HostConfiguration.h"

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/ProcessTree.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/TestHost.h"
#include "tests/hosts/WaitFor.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <thread>

#include <sys/socket.h>
#include <sys/un.h>

namespace tw::test {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::Optional;

/// Reached by a hang only.
constexpr std::chrono::minutes hangLimit{1};

/// The real ssh with a configuration of the test's own. Its starts are counted.
class HostConfigurationTest : public testing::Test {
protected:
    /// `lines` run before ssh.
    std::string program(std::string const &lines = {}) const
    {
        auto script = folder.file("ssh", "#!/bin/sh\necho >> '" + starts + "'\n" + lines + "\nexec /usr/bin/ssh -F '" +
                                             file + "' \"$@\"\n");
        fs::permissions(script, fs::perms::owner_all);
        return script;
    }

    void configure(std::string const &text) const { folder.file("config/main", text); }

    std::shared_ptr<HostConfiguration> make(std::chrono::nanoseconds limit = hangLimit, std::string const &lines = {})
    {
        return std::make_shared<HostConfiguration>(engine, program(lines), limit);
    }

    HostSettings settings(std::string const &host = "box") { return waitFor(configuration->settingsOf(host)); }

    auto timesStarted() const { return std::ranges::count(contentOf(starts), '\n'); }

    EngineRuntime engine;
    TemporaryFolder const folder;
    std::string const starts = folder.file("starts");
    std::string const file = folder.folder("config") + "/main";
    std::shared_ptr<HostConfiguration> configuration = make();
};

TEST_F(HostConfigurationTest, theSettingsAreThoseThatSSHUses)
{
    configure("Host box\n  ConnectTimeout 3\n  ControlPath /run/%h-%p\n  IdentityFile /keys/box\n  Port 2222\n");
    auto const found = settings();
    EXPECT_THAT(found.connectTimeout, Optional(std::chrono::seconds(3)));
    EXPECT_THAT(found.controlPath, Optional(std::string("/run/box-2222")));
    EXPECT_THAT(found.identityFiles, Contains("/keys/box"));
    EXPECT_EQ(settings("other").connectTimeout, std::nullopt);
}

TEST_F(HostConfigurationTest, aHostBehindMatchExecIsFound)
{
    configure("Match exec \"test %n = box\"\n  ConnectTimeout 4\n");
    EXPECT_THAT(settings().connectTimeout, Optional(std::chrono::seconds(4)));
}

TEST_F(HostConfigurationTest, sshIsAskedOnceForEachHost)
{
    configure("Host box\n  ConnectTimeout 3\n");
    settings();
    settings();
    EXPECT_EQ(timesStarted(), 1);
    settings("other");
    EXPECT_EQ(timesStarted(), 2);
}

TEST_F(HostConfigurationTest, aChangedFileIsReadAnew)
{
    configure("Host box\n  ConnectTimeout 3\n");
    settings();
    configure("Host box\n  ConnectTimeout 30\n");
    EXPECT_THAT(settings().connectTimeout, Optional(std::chrono::seconds(30)));
}

TEST_F(HostConfigurationTest, aChangedIncludedFileIsReadAnew)
{
    auto const included = folder.file("included", "ConnectTimeout 3\n");
    configure("Include " + included + "\n");
    EXPECT_THAT(settings().connectTimeout, Optional(std::chrono::seconds(3)));
    folder.file("included", "ConnectTimeout 30\n");
    EXPECT_THAT(settings().connectTimeout, Optional(std::chrono::seconds(30)));
}

TEST_F(HostConfigurationTest, aFurtherFileInAFolderOfTheConfigurationIsSeen)
{
    configure("Include " + folder.path("config") + "/*.conf\n");
    EXPECT_EQ(settings().connectTimeout, std::nullopt);
    folder.file("config/one.conf", "ConnectTimeout 3\n");
    EXPECT_THAT(settings().connectTimeout, Optional(std::chrono::seconds(3)));
}

TEST_F(HostConfigurationTest, aConfigurationThatSSHRefusesSetsNothingAndIsAskedForAgain)
{
    configure("Nonsense yes\n");
    EXPECT_EQ(settings(), HostSettings());
    configure("ConnectTimeout 3\n");
    EXPECT_THAT(settings().connectTimeout, Optional(std::chrono::seconds(3)));
}

TEST_F(HostConfigurationTest, aHostWhoseNameBeginsWithADashIsNoOption)
{
    configure("ConnectTimeout 3\n");
    EXPECT_EQ(settings("-V"), HostSettings()) << "ssh refuses it as a name";
}

TEST_F(HostConfigurationTest, withoutSSHNothingIsSet)
{
    auto const none = std::make_shared<HostConfiguration>(engine, "/nonexistent");
    EXPECT_EQ(waitFor(none->settingsOf("box")), HostSettings());
}

TEST_F(HostConfigurationTest, aMatchThatHangsHoldsUpNobodyAndEnds)
{
    configuration = make(std::chrono::milliseconds(500));
    auto const hanging = folder.path("hanging");
    configure("Match exec \"echo $$ > " + hanging + "; exec sleep 1000\"\n  ConnectTimeout 4\n");
    // On a loaded machine ssh may not have come to it.
    while (!fs::exists(hanging) || fs::is_empty(hanging))
        EXPECT_EQ(settings(), HostSettings());
    auto const process = static_cast<pid_t>(std::stoi(contentOf(hanging)));
    for (auto record = recordOf(process); record && !record->hasEnded(); record = recordOf(process))
        std::this_thread::yield();
}

TEST_F(HostConfigurationTest, noMasterIsOpenWhereThereIsNoSocket)
{
    configure("");
    EXPECT_FALSE(waitFor(configuration->isMasterOpen("box", folder.path("none"))));
}

TEST_F(HostConfigurationTest, aFrozenMasterIsNotOpen)
{
    configure("");
    // Accepts, as the system does for it, and never says anything.
    FileDescriptor const mute(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    folder.path("mute").copy(static_cast<char *>(address.sun_path), sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(mute.get(), reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(mute.get(), 1), 0);
    EXPECT_FALSE(waitFor(configuration->isMasterOpen("box", folder.path("mute"))));
}

TEST_F(HostConfigurationTest, anOpenMasterIsFoundUntilItEnds)
{
    TestHost const host(engine);
    SSHClient client;
    client.add("host", host.address());
    auto const socket = folder.path("master");
    auto const master = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"-o", "ControlPath=" + socket});
        arguments.emplace_back("host");
        return runCommand(engine.io(), {.program = client.program(), .arguments = std::move(arguments)});
    };
    configuration = std::make_shared<HostConfiguration>(engine, client.program());
    ASSERT_TRUE(master({"-o", "ControlMaster=yes", "-o", "ControlPersist=60", "-N", "-f"}).status.isSuccess());
    EXPECT_TRUE(waitFor(configuration->isMasterOpen("host", socket)));
    ASSERT_TRUE(master({"-O", "exit"}).status.isSuccess());
    EXPECT_FALSE(waitFor(configuration->isMasterOpen("host", socket)));
}

} // namespace
} // namespace tw::test
