#include "TWCore/Shell/ShellDialect.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using enum ShellDialect;

TEST(ShellDialectTest, aDialectIsStoredUnderItsName)
{
    EXPECT_EQ(rawText(posix), "posix");
    EXPECT_EQ(rawText(powershell), "powershell");
    EXPECT_EQ(shellDialectFromRaw("posix"), posix);
    EXPECT_EQ(shellDialectFromRaw("powershell"), powershell);
    EXPECT_EQ(shellDialectFromRaw("PowerShell"), std::nullopt);
    EXPECT_EQ(shellDialectFromRaw(""), std::nullopt);
}

TEST(ShellDialectTest, aHostThatNamesTheCommandInterpreterOfWindowsSpeaksPowerShell)
{
    EXPECT_EQ(shellDialectFromProbe("C:\\Windows\\system32\\cmd.exe\r\n"), powershell);
    EXPECT_EQ(shellDialectFromProbe("C:\\WINDOWS\\SYSTEM32\\CMD.EXE"), powershell);
    EXPECT_EQ(shellDialectFromProbe("\xFF motd\ncMd.eXe"), powershell);
}

TEST(ShellDialectTest, aHostThatIsNotKnownYetIsAskedInTheCommandThatStartsItsShell)
{
    EXPECT_EQ(firstRemoteCommand(), "echo \"%COMSPEC%\"; bash -s");
    EXPECT_EQ(shellDialectFromProbe("\"C:\\Windows\\system32\\cmd.exe\"; bash -s\r\n"), powershell);
    EXPECT_EQ(shellDialectFromProbe(firstCommandEcho()), posix);
}

TEST(ShellDialectTest, everyOtherAnswerAndNoneIsPosix)
{
    for (auto const *answer : {"", "%COMSPEC%\n", "cmd exe", "cmd.ex", "command.exe", "cmdXexe"})
        EXPECT_EQ(shellDialectFromProbe(answer), posix) << answer;
}

TEST(ShellDialectTest, aSessionIsAShellThatReadsItsInput)
{
    EXPECT_EQ(remoteCommand(posix), "bash -s");
    EXPECT_EQ(remoteCommand(powershell), "powershell -NoProfile -NoLogo -Command -");
    EXPECT_EQ(lineTerminator(posix), "\n");
    EXPECT_EQ(lineTerminator(powershell), "\r\n");
    EXPECT_FALSE(needsSingleLineRequests(posix));
    EXPECT_TRUE(needsSingleLineRequests(powershell));
}

TEST(ShellDialectTest, aPosixWordIsInSingleQuotesAndLeavesThemForAQuote)
{
    EXPECT_EQ(quote(posix, ""), "''");
    EXPECT_EQ(quote(posix, "a b"), "'a b'");
    EXPECT_EQ(quote(posix, "it's"), "'it'\\''s'");
    EXPECT_EQ(quote(posix, "''"), "''\\'''\\'''");
    EXPECT_EQ(quote(posix, "$(x) `y` \"z\" \\ ! %\n"), "'$(x) `y` \"z\" \\ ! %\n'");
}

TEST(ShellDialectTest, aPowerShellWordDoublesItsQuotes)
{
    EXPECT_EQ(quote(powershell, ""), "''");
    EXPECT_EQ(quote(powershell, "a b"), "'a b'");
    EXPECT_EQ(quote(powershell, "it's"), "'it''s'");
    EXPECT_EQ(quote(powershell, "''"), "''''''");
    EXPECT_EQ(quote(powershell, "$x `y \"z\" \\"), "'$x `y \"z\" \\'");
}

TEST(ShellDialectTest, theQuotesOfTypographyEndAPowerShellWordAndAreDoubledToo)
{
    EXPECT_EQ(quote(powershell, "it\u2019s"), "'it\u2019\u2019s'");
    EXPECT_EQ(quote(powershell, "\u2018\u201A\u201B"), "'\u2018\u2018\u201A\u201A\u201B\u201B'");
    EXPECT_EQ(quote(powershell, "\u2019; rm x; \u2018"), "'\u2019\u2019; rm x; \u2018\u2018'");
}

TEST(ShellDialectTest, signsThatOnlyLookLikeQuotesStayAlone)
{
    for (std::string const text : {"\u2017", "\u201C\u201D", "\u02BC", "`", "\xE2\x80", "\xE2", "\xE2\x81\x99"})
        EXPECT_EQ(quote(powershell, text), "'" + text + "'");
}

TEST(ShellDialectTest, aPosixRequestIsWrittenAsItIs)
{
    EXPECT_EQ(encodeRequest(posix, "tw_size 1 '/a\nb'"), "tw_size 1 '/a\nb'");
}

TEST(ShellDialectTest, aPowerShellRequestIsOneLineOfBase64)
{
    EXPECT_EQ(encodeRequest(powershell, "TWList 7 2 'C:/Users/it''s'"),
              "iex ([Text.Encoding]::UTF8.GetString([Convert]::FromBase64String("
              "'VFdMaXN0IDcgMiAnQzovVXNlcnMvaXQnJ3Mn')))");
    EXPECT_EQ(encodeRequest(powershell, std::string(5000, '\n')).find('\n'), std::string::npos);
}

TEST(ShellDialectTest, aPathIsQuotedInTheFormThatTheHostKnows)
{
    EXPECT_EQ(quotePath(posix, "/it's"), "'/it'\\''s'");
    EXPECT_EQ(quotePath(powershell, "/C:/it's"), "'C:/it''s'");
    EXPECT_EQ(quotePath(powershell, "/"), "''");
}

} // namespace
} // namespace tw::test
