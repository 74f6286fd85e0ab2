#include "TWEngine/SSH/SSHCommandLine.h"
#include "TWEngine/SSHConfig/SSHConfigFile.h"
#include "tests/support/ChildProcessTest.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using SSHConfigFile::Entry;
using testing::HasSubstr;
using testing::Not;

/// What OpenSSH itself takes from a configuration.
class SSHConfigOpenSSHTest : public ChildProcessTest {
protected:
    /// Its settings for `alias`, a line each.
    std::string settings(std::string const &configuration, std::string const &alias)
    {
        auto const file = folder.file("config", configuration);
        return '\n' +
               outputOf({.program = std::string(SSHCommandLine::program), .arguments = {"-G", "-F", file, alias}});
    }

    TemporaryFolder folder;
};

TEST_F(SSHConfigOpenSSHTest, whatIsWrittenMeansWhatTheEntrySays)
{
    std::vector<Entry> const entries{{.alias = "box",
                                      .hostName = "10.0.0.1",
                                      .user = "ann",
                                      .port = "2222",
                                      .identityFile = "\"/keys/of ann/id\"",
                                      .proxyJump = "gate",
                                      .extras = {"# also: crate", "ForwardAgent yes", "# a note"}},
                                     {.alias = "other", .hostName = "10.0.0.2"}};
    auto const configuration = SSHConfigFile::render("Host *\n\tCompression yes\n", entries);
    auto const box = settings(configuration, "box");
    for (auto const *line : {"hostname 10.0.0.1", "user ann", "port 2222", "identityfile /keys/of ann/id",
                             "proxyjump gate", "forwardagent yes", "compression yes"})
        EXPECT_THAT(box, HasSubstr('\n' + std::string(line) + '\n'));
    auto const other = settings(configuration, "other");
    EXPECT_THAT(other, HasSubstr("\nhostname 10.0.0.2\n"));
    EXPECT_THAT(other, HasSubstr("\nport 22\n"));
    EXPECT_THAT(other, HasSubstr("\nforwardagent no\n"));
}

TEST_F(SSHConfigOpenSSHTest, theBlockCanStandBehindLinesOfWindows)
{
    auto const configuration =
        SSHConfigFile::render("Host mine\r\n\tUser ann\r\n", std::vector<Entry>{{.alias = "box", .port = "2222"}});
    EXPECT_THAT(settings(configuration, "mine"), HasSubstr("\nuser ann\n"));
    EXPECT_THAT(settings(configuration, "box"), HasSubstr("\nport 2222\n"));
}

TEST_F(SSHConfigOpenSSHTest, noValueBringsAnotherOption)
{
    std::string const evil = "1\nProxyCommand evil";
    std::vector<Entry> const entries{
        {.alias = "box", .hostName = evil, .user = evil, .port = evil, .identityFile = evil, .proxyJump = evil}};
    auto const box = settings(SSHConfigFile::render("", entries), "box");
    EXPECT_THAT(box, HasSubstr("\nport 1\n"));
    EXPECT_THAT(box, Not(HasSubstr("evil")));
}

TEST_F(SSHConfigOpenSSHTest, theAliasesAreThoseThatItHasSettingsFor)
{
    auto const *const configuration = "Host one\nPort 1\nHost t*\nPort 2\nHOST=three four\nPort 3\n";
    EXPECT_THAT(SSHConfigFile::aliases(configuration), testing::ElementsAre("one", "three"));
    EXPECT_THAT(settings(configuration, "one"), HasSubstr("\nport 1\n"));
    EXPECT_THAT(settings(configuration, "four"), HasSubstr("\nport 3\n"));
}

} // namespace
} // namespace tw::test
