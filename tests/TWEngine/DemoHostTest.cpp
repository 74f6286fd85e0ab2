#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/support/DiskRows.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tw::test {
namespace {

/// scripts/demo-host, in a home folder of the test's own.
class DemoHostTest : public testing::Test {
protected:
    /// Runs a command for a POSIX shell while the host is there; $1 is HOST:PATH.
    CommandOutcome whileThere(std::string const &command)
    {
        auto environment = inheritedEnvironment();
        environment["TARNWICK_DEMO_HOME"] = home.path();
        environment["SSH"] = "ssh -o BatchMode=yes -F " + home.path(".ssh/config");
        return runCommand(
            engine.io(),
            {.program = TARNWICK_DEMO_HOST, .arguments = {"sh", "-c", command, "sh"}, .environment = environment});
    }

    EngineRuntime engine;
    TemporaryFolder const home;
};

TEST_F(DemoHostTest, itIsReachedByItsNameAndHasSamples)
{
    auto const listed = whileThere("$SSH \"${1%%:*}\" ls \"${1#*:}\"");
    EXPECT_EQ(listed.error, "");
    EXPECT_TRUE(listed.status.isSuccess());
    EXPECT_EQ(listed.output, "Documents\nLogs\nProjects\nwith space.txt\n日本語.txt\n");
    EXPECT_THAT(namesOnDisk(home.path(".ssh")), testing::IsEmpty());
}

TEST_F(DemoHostTest, theUsersSettingsAreWhatTheyWereAfterwards)
{
    home.folder(".ssh");
    for (std::string const settings : {"Host other\n    Port 7\n", "Port 1 # without an end of line"}) {
        auto const file = home.file(".ssh/config", settings);
        ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
        auto const during = whileThere("$SSH -G \"${1%%:*}\" | grep '^hostname'; exit 3");
        EXPECT_EQ(during.output, "hostname 127.0.0.1\n");
        EXPECT_EQ(during.status.number, 3);
        EXPECT_EQ(contentOf(file), settings);
        struct stat status{};
        ASSERT_EQ(::stat(file.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0640U);
    }
}

} // namespace
} // namespace tw::test
