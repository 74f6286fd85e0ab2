#include "TWEngine/SSH/DownloadEnd.h"
#include "TWEngine/SSH/SSHCommandLine.h"
#include "tests/support/ChildProcessTest.h"
#include "tests/support/DiskRows.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAreArray;
using enum ShellDialect;

/// The one-shot commands, run by the login shell of a host that has no bash.
class OneShotCommandTest : public ChildProcessTest {
protected:
    /// What stands behind the host, which the host's login shell gets.
    ChildHandle runOnHost(SSHCommandLine::Arguments const &arguments, ChildEnd input)
    {
        return start(
            {.program = "dash", .arguments = {"-c", arguments.back()}, .input = std::move(input), .output = PipeEnd{}});
    }

    static std::vector<std::string> tellableNames()
    {
        auto names = hostileNames();
        constexpr std::size_t longestWithTemporary = 200;
        std::erase_if(names,
                      [](auto const &name) { return name.ends_with('\n') || name.size() > longestWithTemporary; });
        return names;
    }

    TemporaryFolder folder;
};

TEST_F(OneShotCommandTest, aDownloadIsTheBytesOfTheFileThatIsMeant)
{
    for (auto const &name : tellableNames()) {
        auto const path = folder.file(name, "the bytes of " + name);
        auto const cat = runOnHost(SSHCommandLine::download({}, "host", posix, path), NullEnd{});
        EXPECT_EQ(readAll(cat), "the bytes of " + name + std::string(DownloadEnd::words));
        EXPECT_EQ(wait(cat), exited(0));
    }
}

TEST_F(OneShotCommandTest, aDownloadThatFailsHasNoEnd)
{
    auto const cat = runOnHost(SSHCommandLine::download({}, "host", posix, folder.path("missing")), NullEnd{});
    EXPECT_EQ(readAll(cat), "");
    EXPECT_NE(wait(cat), exited(0));
}

TEST_F(OneShotCommandTest, anUploadMakesTheFileThatIsMeantAndNoOther)
{
    auto const names = tellableNames();
    TemporaryFolder local;
    for (auto const &name : names) {
        auto const source = local.file("source", "the bytes of " + name);
        auto const cat = runOnHost(SSHCommandLine::upload({}, "host", posix, folder.path(name)),
                                   FileEnd{.path = source, .use = FileEnd::Use::read});
        EXPECT_EQ(wait(cat), exited(0));
        EXPECT_EQ(contentOf(folder.path(name)), "the bytes of " + name);
    }
    EXPECT_THAT(namesOnDisk(folder.path()), UnorderedElementsAreArray(names));
}

TEST_F(OneShotCommandTest, anUploadKeepsTheModeOfTheFile)
{
    auto const path = folder.file("file", "old and longer");
    ASSERT_EQ(chmod(path.c_str(), 0751), 0);
    TemporaryFolder local;
    auto const cat = runOnHost(SSHCommandLine::upload({}, "host", posix, path),
                               FileEnd{.path = local.file("source", "new"), .use = FileEnd::Use::read});
    EXPECT_EQ(wait(cat), exited(0));
    EXPECT_EQ(contentOf(path), "new");
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0751U);
}

TEST_F(OneShotCommandTest, anUploadThatFailsLeavesTheTemporaryForItsRemoval)
{
    auto const path = folder.folder("in the way");
    TemporaryFolder local;
    auto const cat = runOnHost(SSHCommandLine::upload({}, "host", posix, path),
                               FileEnd{.path = local.file("source", "new"), .use = FileEnd::Use::read});
    EXPECT_FALSE(wait(cat).isSuccess());
    EXPECT_EQ(contentOf(SSHCommandLine::uploadTemporary(path)), "new");

    auto const remove = startShell(SSHCommandLine::removeUploadTemporary(posix, path));
    EXPECT_EQ(wait(remove), exited(0));
    EXPECT_THAT(namesOnDisk(folder.path()), ElementsAre("in the way"));
}

/// The ssh of this machine as the judge of what it is told. With -G it says what it understood, and calls nobody.
class SSHUnderstandingTest : public ChildProcessTest {
protected:
    std::string understood(SSHCommandLine::Arguments const &arguments)
    {
        SSHCommandLine::Arguments all{"-G", "-F", "none"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return '\n' + outputOf({.program = std::string(SSHCommandLine::program), .arguments = all});
    }
};

TEST_F(SSHUnderstandingTest, everyOptionOfASession)
{
    auto const text = understood(SSHCommandLine::session(
        {.controlPath = "/tmp/.tw-1/00000000", .askpassHelper = "/a", .askpassAccount = "b", .knowsSessionType = true},
        "ann@box", posix));
    for (std::string const line :
         {"batchmode no", "connecttimeout 10", "serveraliveinterval 15", "serveralivecountmax 3", "compression no",
          "controlmaster auto", "controlpath /tmp/.tw-1/00000000", "controlpersist 60", "numberofpasswordprompts 1",
          "requesttty false", "permitlocalcommand no", "clearallforwardings yes", "sessiontype default", "stdinnull no",
          "forkafterauthentication no", "host box", "user ann"})
        EXPECT_NE(text.find('\n' + line + '\n'), std::string::npos) << line << " is not in\n" << text;
}

TEST_F(SSHUnderstandingTest, aHostThatLooksLikeAnOptionIsNone)
{
    auto const child = start(
        {.program = std::string(SSHCommandLine::program),
         .arguments = SSHCommandLine::download({"-G", "-F", "none"}, "-oProxyCommand=false", ShellDialect::posix, "/f"),
         .output = PipeEnd{}});
    EXPECT_EQ(readAll(child).find("proxycommand"), std::string::npos);
    EXPECT_NE(wait(child), exited(0)) << "ssh takes no host of that name, whatever stands before it";
}

} // namespace
} // namespace tw::test
