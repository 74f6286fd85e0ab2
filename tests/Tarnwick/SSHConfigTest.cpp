#include "Tarnwick/Connections/SSHConfig.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SSHConfigTest : public testing::Test {
protected:
    std::vector<std::string> hosts(std::string const &path)
    {
        return loop.run(SSHConfig::hosts(engine.workers(), path));
    }

    EngineRuntime engine;
    TestLoop loop;
    TemporaryFolder home;
};

TEST_F(SSHConfigTest, theHostsAreTheNamesInTheFile)
{
    EXPECT_THAT(hosts(home.file("config", "Host b c\nHost *\nHost a\nHost b\n")), ElementsAre("b", "c", "a"));
}

TEST_F(SSHConfigTest, aFileThatCannotBeReadHasNone)
{
    EXPECT_THAT(hosts(home.path("missing")), IsEmpty());
    EXPECT_THAT(hosts(home.folder("folder")), IsEmpty());
    ASSERT_EQ(mkfifo(home.path("pipe").c_str(), 0600), 0);
    EXPECT_THAT(hosts(home.path("pipe")), IsEmpty());
    EXPECT_THAT(hosts(home.file("huge", "Host a\n" + std::string(SSHConfigOnDisk::maxBytes, '\n'))), IsEmpty());
}

TEST_F(SSHConfigTest, itIsTheFileThatSSHReadsWhateverHomeSays)
{
    std::string const known = ::getpwuid(::getuid())->pw_dir;
    auto const *const before = std::getenv("HOME");
    auto const restored = before ? std::optional<std::string>(before) : std::nullopt;
    ::setenv("HOME", home.path().c_str(), 1);
    auto const path = SSHConfigOnDisk::pathOfThisUser();
    if (restored)
        ::setenv("HOME", restored->c_str(), 1);
    else
        ::unsetenv("HOME");
    EXPECT_EQ(path, known + "/.ssh/config");
}

} // namespace
} // namespace tw::test
