#include "TWEngine/Remote/SshCommandLine.h"

#include "TWEngine/Remote/ShellLiteral.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using enum ShellDialect;

SshCommandLine::Arguments const bare{"-o", "BatchMode=yes"};

TEST(SshCommandLineTest, optionsHaveTheDefaultsThatHostsAreUsuallyReachedWith)
{
    RemoteShellOptions const options;
    EXPECT_EQ(options.connectTimeout, std::chrono::seconds(10));
    EXPECT_EQ(options.requestTimeout, std::chrono::seconds(60));
    EXPECT_EQ(options.keepAliveInterval, std::chrono::seconds(15));
    EXPECT_TRUE(options.compression);
    EXPECT_EQ(options.maxResponseBytes, 8'388'608U);
    EXPECT_EQ(options.controlPath, std::nullopt);
    EXPECT_EQ(options.controlPersist, std::chrono::seconds(60));
    EXPECT_EQ(options.askpassHelper, std::nullopt);
    EXPECT_EQ(options.askpassAccount, std::nullopt);
}

TEST(SshCommandLineTest, aSessionIsTheResidentShellOfTheHost)
{
    EXPECT_EQ(SshCommandLine::program, "/usr/bin/ssh");
    EXPECT_THAT(SshCommandLine::session({}, "box", posix),
                ElementsAre("-o", "BatchMode=yes", "-o", "ConnectTimeout=10", "-o", "ServerAliveInterval=15", "-o",
                            "ServerAliveCountMax=3", "-C", "--", "box", "bash -s"));
    EXPECT_EQ(SshCommandLine::session({}, "box", powershell).back(), "powershell -NoProfile -NoLogo -Command -");
}

TEST(SshCommandLineTest, everyOptionHasItsPlace)
{
    RemoteShellOptions const options{.connectTimeout = std::chrono::duration<double>(7.9),
                                     .keepAliveInterval = std::chrono::seconds(30),
                                     .controlPath = "/tmp/.tw-1/00000000",
                                     .controlPersist = std::chrono::seconds(5),
                                     .askpassHelper = "/usr/bin/tarnwick",
                                     .askpassAccount = "ann@box"};
    EXPECT_THAT(SshCommandLine::session(options, "ann@box", posix),
                ElementsAre("-o", "BatchMode=no", "-o", "ConnectTimeout=7", "-o", "ServerAliveInterval=30", "-o",
                            "ServerAliveCountMax=3", "-C", "-o", "ControlMaster=auto", "-o",
                            "ControlPath=/tmp/.tw-1/00000000", "-o", "ControlPersist=5", "-o",
                            "NumberOfPasswordPrompts=1", "--", "ann@box", "bash -s"));
}

TEST(SshCommandLineTest, withoutCompressionThereIsNoOptionForIt)
{
    EXPECT_THAT(SshCommandLine::session({.compression = false}, "box", posix),
                ElementsAre("-o", "BatchMode=yes", "-o", "ConnectTimeout=10", "-o", "ServerAliveInterval=15", "-o",
                            "ServerAliveCountMax=3", "--", "box", "bash -s"));
}

TEST(SshCommandLineTest, sshIsToAskForAPasswordOnlyIfItKnowsWhomAndForWhichAccount)
{
    EXPECT_THAT(SshCommandLine::sessionEnvironment({}), IsEmpty());
    for (auto const &half :
         {RemoteShellOptions{.askpassHelper = "/usr/bin/tarnwick"}, RemoteShellOptions{.askpassAccount = "ann@box"}}) {
        EXPECT_THAT(SshCommandLine::sessionEnvironment(half), IsEmpty());
        EXPECT_EQ(SshCommandLine::session(half, "box", posix), SshCommandLine::session({}, "box", posix));
    }
    EXPECT_THAT(SshCommandLine::sessionEnvironment({.askpassHelper = "/usr/bin/tarnwick", .askpassAccount = "ann@box"}),
                ElementsAre(Pair("SSH_ASKPASS", "/usr/bin/tarnwick"), Pair("SSH_ASKPASS_REQUIRE", "force"),
                            Pair("TW_ASKPASS_ACCOUNT", "ann@box")));
}

TEST(SshCommandLineTest, aHostThatLooksLikeAnOptionStandsBehindThem)
{
    for (auto const &arguments :
         {SshCommandLine::session({}, "-oProxyCommand=x", posix), SshCommandLine::probe(bare, "-oProxyCommand=x"),
          SshCommandLine::download(bare, "-oProxyCommand=x", posix, "/f"),
          SshCommandLine::upload(bare, "-oProxyCommand=x", posix, "/f")}) {
        ASSERT_GE(arguments.size(), 3U);
        EXPECT_EQ(arguments[arguments.size() - 3], "--");
        EXPECT_EQ(arguments[arguments.size() - 2], "-oProxyCommand=x");
    }
}

TEST(SshCommandLineTest, otherCallsAskNobodyAndShareTheConnectionIfTheyCan)
{
    RemoteShellOptions options{.keepAliveInterval = std::chrono::seconds(7), .controlPath = "/tmp/.tw-1/11111111"};
    EXPECT_THAT(SshCommandLine::transportOptions(options, std::nullopt),
                ElementsAre("-o", "BatchMode=yes", "-o", "ServerAliveInterval=7", "-o", "ServerAliveCountMax=3"));
    options.controlPersist = std::chrono::seconds(9); // of the sessions only
    EXPECT_THAT(SshCommandLine::transportOptions(options, "/tmp/.tw-1/00000000"),
                ElementsAre("-o", "BatchMode=yes", "-o", "ServerAliveInterval=7", "-o", "ServerAliveCountMax=3", "-o",
                            "ControlMaster=auto", "-o", "ControlPath=/tmp/.tw-1/00000000", "-o", "ControlPersist=60"));
}

TEST(SshCommandLineTest, theProbeAsksForTheCommandInterpreter)
{
    EXPECT_THAT(SshCommandLine::probe(bare, "box"),
                ElementsAre("-o", "BatchMode=yes", "-o", "ConnectTimeout=10", "--", "box", "echo %COMSPEC%"));
}

TEST(SshCommandLineTest, aDownloadPrintsTheFile)
{
    EXPECT_THAT(SshCommandLine::download(bare, "box", posix, "/srv/it's"),
                ElementsAre("-o", "BatchMode=yes", "--", "box", "cat -- '/srv/it'\\''s'"));
    EXPECT_EQ(SshCommandLine::download(bare, "box", posix, "/\xFF").back(), "cat -- \"$(printf '\\057\\377')\"");
    EXPECT_EQ(SshCommandLine::download(bare, "box", powershell, "/C:/it's").back(),
              ShellLiteral::powerShellEncoded("$f=[IO.File]::OpenRead('C:/it''s')\n"
                                              "$o=[Console]::OpenStandardOutput()\n"
                                              "$f.CopyTo($o); $f.Close(); $o.Flush()"));
}

TEST(SshCommandLineTest, anUploadGoesThroughAFileBesideTheTarget)
{
    EXPECT_EQ(SshCommandLine::uploadTemporary("/a b"), "/a b.tw-upload");
    EXPECT_THAT(SshCommandLine::upload(bare, "box", posix, "/a b"),
                ElementsAre("-o", "BatchMode=yes", "--", "box",
                            "cat > '/a b.tw-upload' && cat '/a b.tw-upload' > '/a b' && rm -f '/a b.tw-upload'"));
    EXPECT_EQ(SshCommandLine::upload(bare, "box", posix, "/a", 12).back(),
              "cat > '/a.tw-upload' && wc -c < '/a.tw-upload' | grep -q '^ *12$' && cat '/a.tw-upload' > '/a' && rm "
              "-f '/a.tw-upload'");
    EXPECT_EQ(SshCommandLine::upload(bare, "box", powershell, "/C:/it's").back(),
              ShellLiteral::powerShellEncoded("$t='C:/it''s.tw-upload'\n"
                                              "$i=[Console]::OpenStandardInput()\n"
                                              "$f=[IO.File]::Create($t)\n"
                                              "$i.CopyTo($f); $f.Close()\n"
                                              "Copy-Item -LiteralPath $t -Destination 'C:/it''s' -Force\n"
                                              "Remove-Item -LiteralPath $t -Force"));
}

TEST(SshCommandLineTest, whatAFailedUploadLeftIsRemovedThroughTheSession)
{
    EXPECT_EQ(SshCommandLine::removeUploadTemporary(posix, "/it's"), "rm -f '/it'\\''s.tw-upload'");
    EXPECT_EQ(SshCommandLine::removeUploadTemporary(powershell, "/C:/it's"),
              "Remove-Item -LiteralPath 'C:/it''s.tw-upload' -Force -ErrorAction SilentlyContinue");
}

} // namespace
} // namespace tw::test
