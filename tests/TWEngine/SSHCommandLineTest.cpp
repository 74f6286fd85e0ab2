#include "TWEngine/SSH/SSHCommandLine.h"

#include "TWCore/Shell/ShellLiteral.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;
using enum ShellDialect;

using Arguments = SSHCommandLine::Arguments;

Arguments const bare{"-o", "BatchMode=yes"};

/// What every call ends with before the host.
Arguments const clean{"-T",
                      "-o",
                      "RequestTTY=no",
                      "-o",
                      "RemoteCommand=none",
                      "-o",
                      "PermitLocalCommand=no",
                      "-o",
                      "ClearAllForwardings=yes"};

Arguments joined(Arguments arguments, Arguments const &more, Arguments const &last = {})
{
    arguments.insert(arguments.end(), more.begin(), more.end());
    arguments.insert(arguments.end(), last.begin(), last.end());
    return arguments;
}

/// The same of a session, whose client tells how far it has got.
Arguments const ofSession = joined(clean, {"-o", "LogLevel=DEBUG1"});

TEST(SSHCommandLineTest, optionsHaveTheDefaultsThatHostsAreUsuallyReachedWith)
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

TEST(SSHCommandLineTest, aSessionIsTheResidentShellOfTheHost)
{
    EXPECT_EQ(SSHCommandLine::program, "/usr/bin/ssh");
    EXPECT_EQ(SSHCommandLine::session({}, "box", posix),
              joined({"-o", "BatchMode=yes", "-o", "ConnectTimeout=10", "-o", "ServerAliveInterval=15", "-o",
                      "ServerAliveCountMax=3", "-C"},
                     ofSession, {"--", "box", "bash -s"}));
    EXPECT_EQ(SSHCommandLine::session({}, "box", powershell).back(), "powershell -NoProfile -NoLogo -Command -");
}

TEST(SSHCommandLineTest, everyOptionHasItsPlace)
{
    RemoteShellOptions const options{.connectTimeout = std::chrono::duration<double>(7.9),
                                     .keepAliveInterval = std::chrono::seconds(30),
                                     .controlPath = "/tmp/.tw-1/00000000",
                                     .controlPersist = std::chrono::seconds(5),
                                     .askpassHelper = "/usr/bin/tarnwick",
                                     .askpassAccount = "ann@box"};
    EXPECT_EQ(SSHCommandLine::session(options, "ann@box", posix),
              joined({"-o", "BatchMode=no", "-o", "ConnectTimeout=7", "-o", "ServerAliveInterval=30", "-o",
                      "ServerAliveCountMax=3", "-o", "Compression=no", "-o", "ControlMaster=auto", "-o",
                      "ControlPath=/tmp/.tw-1/00000000", "-o", "ControlPersist=5", "-o", "NumberOfPasswordPrompts=1"},
                     ofSession, {"--", "ann@box", "bash -s"}));
}

TEST(SSHCommandLineTest, theUsersOwnConnectionIsUsedAndNeverOpened)
{
    RemoteShellOptions const options{.controlPath = "/home/ann/.ssh/box",
                                     .sharing = RemoteShellOptions::Sharing::users};
    Arguments const shared{"-o", "Compression=no", "-o", "ControlMaster=no", "-o", "ControlPath=/home/ann/.ssh/box"};
    Arguments const session{"-o", "BatchMode=yes",          "-o", "ConnectTimeout=10",
                            "-o", "ServerAliveInterval=15", "-o", "ServerAliveCountMax=3"};
    EXPECT_EQ(SSHCommandLine::session(options, "box", posix),
              joined(joined(session, shared), ofSession, {"--", "box", "bash -s"}));
    EXPECT_EQ(SSHCommandLine::transportOptions(options, options.controlPath), joined(session, shared, clean));
}

TEST(SSHCommandLineTest, aClientThatKnowsMoreWaysToSpoilASessionIsKeptFromThem)
{
    RemoteShellOptions const options{.knowsSessionType = true};
    auto const more =
        joined(clean, {"-o", "SessionType=default", "-o", "StdinNull=no", "-o", "ForkAfterAuthentication=no"});
    EXPECT_EQ(SSHCommandLine::transportOptions(options, std::nullopt),
              joined({"-o", "BatchMode=yes", "-o", "ConnectTimeout=10", "-o", "ServerAliveInterval=15", "-o",
                      "ServerAliveCountMax=3"},
                     more));
    auto const session = SSHCommandLine::session(options, "box", posix);
    auto const logLevel = session.end() - 5;
    EXPECT_EQ(Arguments(logLevel - std::ssize(more), logLevel), more);
}

TEST(SSHCommandLineTest, everyClientEndsWithTheProgram)
{
    EXPECT_EQ(SSHCommandLine::sessionClient("ssh", {}, {}).end, ChildCommand::End::withProgram);
    EXPECT_EQ(SSHCommandLine::transferClient("ssh", {}).end, ChildCommand::End::withProgram);
}

TEST(SSHCommandLineTest, theFirstSessionDiffersInItsCommandOnly)
{
    RemoteShellOptions const options{.controlPath = "/tmp/.tw-1/00000000"};
    auto wanted = SSHCommandLine::session(options, "box", posix);
    wanted.back() = firstRemoteCommand();
    EXPECT_EQ(SSHCommandLine::firstSession(options, "box"), wanted);
}

TEST(SSHCommandLineTest, aClientHasAnEnvironmentOfItsOwnOnlyIfItNeedsOne)
{
    EXPECT_EQ(SSHCommandLine::sessionClient("ssh", {"box"}, {}).environment, std::nullopt);
    auto const client =
        SSHCommandLine::sessionClient("ssh", {"box"}, {.askpassHelper = "/usr/bin/tarnwick", .askpassAccount = "ann"});
    EXPECT_EQ(client.program, "ssh");
    EXPECT_THAT(client.arguments, ElementsAre("box"));
    EXPECT_EQ(client.environment.value().at("TW_ASKPASS_ACCOUNT"), "ann");
    EXPECT_TRUE(client.environment->contains("PATH"));
}

TEST(SSHCommandLineTest, aClientThatLogsInAsksTheUserThreeTimes)
{
    RemoteShellOptions const options{.askpassHelper = "/usr/bin/tarnwick",
                                     .askpassAccount = "ann",
                                     .loginEnvironment = {{"TW_ASKPASS_SOCKET", "/run/socket"}}};
    auto const arguments = SSHCommandLine::session(options, "box", posix);
    EXPECT_THAT(arguments, Contains("BatchMode=no"));
    EXPECT_THAT(arguments, Contains("NumberOfPasswordPrompts=3"));
    EXPECT_THAT(arguments, Not(Contains("NumberOfPasswordPrompts=1")));
    EXPECT_THAT(SSHCommandLine::sessionEnvironment(options), ElementsAre(Pair("TW_ASKPASS_SOCKET", "/run/socket")));
}

TEST(SSHCommandLineTest, withoutCompressionThereIsNoOptionForIt)
{
    EXPECT_EQ(SSHCommandLine::session({.compression = false}, "box", posix),
              joined({"-o", "BatchMode=yes", "-o", "ConnectTimeout=10", "-o", "ServerAliveInterval=15", "-o",
                      "ServerAliveCountMax=3"},
                     ofSession, {"--", "box", "bash -s"}));
}

TEST(SSHCommandLineTest, sshIsToAskForAPasswordOnlyIfItKnowsWhomAndForWhichAccount)
{
    EXPECT_THAT(SSHCommandLine::sessionEnvironment({}), IsEmpty());
    for (auto const &half :
         {RemoteShellOptions{.askpassHelper = "/usr/bin/tarnwick"}, RemoteShellOptions{.askpassAccount = "ann@box"}}) {
        EXPECT_THAT(SSHCommandLine::sessionEnvironment(half), IsEmpty());
        EXPECT_EQ(SSHCommandLine::session(half, "box", posix), SSHCommandLine::session({}, "box", posix));
    }
    EXPECT_THAT(SSHCommandLine::sessionEnvironment({.askpassHelper = "/usr/bin/tarnwick", .askpassAccount = "ann@box"}),
                ElementsAre(Pair("SSH_ASKPASS", "/usr/bin/tarnwick"), Pair("SSH_ASKPASS_REQUIRE", "force"),
                            Pair("TW_ASKPASS_ACCOUNT", "ann@box")));
}

TEST(SSHCommandLineTest, aHostThatLooksLikeAnOptionStandsBehindThem)
{
    for (auto const &arguments :
         {SSHCommandLine::session({}, "-oProxyCommand=x", posix), SSHCommandLine::firstSession({}, "-oProxyCommand=x"),
          SSHCommandLine::download(bare, "-oProxyCommand=x", posix, "/f"),
          SSHCommandLine::upload(bare, "-oProxyCommand=x", posix, "/f")}) {
        ASSERT_GE(arguments.size(), 3U);
        EXPECT_EQ(arguments[arguments.size() - 3], "--");
        EXPECT_EQ(arguments[arguments.size() - 2], "-oProxyCommand=x");
    }
}

TEST(SSHCommandLineTest, otherCallsAskNobodyAndShareTheConnectionIfTheyCan)
{
    RemoteShellOptions options{.connectTimeout = std::chrono::seconds(3),
                               .keepAliveInterval = std::chrono::seconds(7),
                               .controlPath = "/tmp/.tw-1/11111111"};
    Arguments const alone{"-o", "BatchMode=yes",         "-o", "ConnectTimeout=3",
                          "-o", "ServerAliveInterval=7", "-o", "ServerAliveCountMax=3"};
    EXPECT_EQ(SSHCommandLine::transportOptions(options, std::nullopt), joined(alone, clean));
    options.controlPersist = std::chrono::seconds(9); // of the sessions only
    EXPECT_EQ(SSHCommandLine::transportOptions(options, "/tmp/.tw-1/00000000"),
              joined(alone,
                     {"-o", "Compression=no", "-o", "ControlMaster=auto", "-o", "ControlPath=/tmp/.tw-1/00000000", "-o",
                      "ControlPersist=60"},
                     clean));
}

TEST(SSHCommandLineTest, aDownloadPrintsTheFile)
{
    EXPECT_THAT(SSHCommandLine::download(bare, "box", posix, "/srv/it's"),
                ElementsAre("-o", "BatchMode=yes", "--", "box", "cat -- '/srv/it'\\''s' && echo tw-end-of-file"));
    EXPECT_EQ(SSHCommandLine::download(bare, "box", posix, "/\xFF").back(),
              "cat -- \"$(printf '\\057\\377')\" && echo tw-end-of-file");
    EXPECT_EQ(SSHCommandLine::download(bare, "box", powershell, "/C:/it's").back(),
              ShellLiteral::powerShellEncoded("$f=[IO.File]::OpenRead('C:/it''s')\n"
                                              "$o=[Console]::OpenStandardOutput()\n"
                                              "$f.CopyTo($o); $f.Close(); $o.Flush()"));
}

TEST(SSHCommandLineTest, aScriptIsReadFromStandardInput)
{
    EXPECT_THAT(SSHCommandLine::script(bare, "box"), ElementsAre("-o", "BatchMode=yes", "--", "box", "bash -s"));
}

TEST(SSHCommandLineTest, anUploadGoesThroughAFileBesideTheTarget)
{
    EXPECT_EQ(SSHCommandLine::uploadTemporary("/a b"), "/a b.tw-upload");
    EXPECT_THAT(SSHCommandLine::upload(bare, "box", posix, "/a b"),
                ElementsAre("-o", "BatchMode=yes", "--", "box",
                            "cat > '/a b.tw-upload' && cat '/a b.tw-upload' > '/a b' && rm -f '/a b.tw-upload'"));
    EXPECT_EQ(SSHCommandLine::upload(bare, "box", posix, "/a", 12).back(),
              "cat > '/a.tw-upload' && wc -c < '/a.tw-upload' | grep -q '^ *12$' && cat '/a.tw-upload' > '/a' && rm "
              "-f '/a.tw-upload'");
    EXPECT_EQ(SSHCommandLine::upload(bare, "box", powershell, "/C:/it's").back(),
              ShellLiteral::powerShellEncoded("$t='C:/it''s.tw-upload'\n"
                                              "$i=[Console]::OpenStandardInput()\n"
                                              "$f=[IO.File]::Create($t)\n"
                                              "$i.CopyTo($f); $f.Close()\n"
                                              "Copy-Item -LiteralPath $t -Destination 'C:/it''s' -Force\n"
                                              "Remove-Item -LiteralPath $t -Force"));
}

TEST(SSHCommandLineTest, whatAFailedUploadLeftIsRemovedThroughTheSession)
{
    EXPECT_EQ(SSHCommandLine::removeUploadTemporary(posix, "/it's"), "rm -f '/it'\\''s.tw-upload'");
    EXPECT_EQ(SSHCommandLine::removeUploadTemporary(powershell, "/C:/it's"),
              "Remove-Item -LiteralPath 'C:/it''s.tw-upload' -Force -ErrorAction SilentlyContinue");
}

} // namespace
} // namespace tw::test
