#include "TWCore/Shell/ShellLiteral.h"

#include <gtest/gtest.h>

#include <array>

namespace tw::test {
namespace {

TEST(ShellLiteralTest, printableAsciiIsAQuotedWord)
{
    EXPECT_EQ(ShellLiteral::posix("/srv/a b~"), "'/srv/a b~'");
    EXPECT_EQ(ShellLiteral::posix("it's"), "'it'\\''s'");
    EXPECT_EQ(ShellLiteral::posix(""), "''");
}

TEST(ShellLiteralTest, anyOtherByteMakesTheWholeTextPrintedByTheHost)
{
    EXPECT_EQ(ShellLiteral::posix("a\xC3\xA9"), "\"$(printf '\\141\\303\\251')\"");
    EXPECT_EQ(ShellLiteral::posix("'\n%"), "\"$(printf '\\047\\012\\045')\"");
    EXPECT_EQ(ShellLiteral::posix("\x7F"), "\"$(printf '\\177')\"");
    EXPECT_EQ(ShellLiteral::posix("\x1F"), "\"$(printf '\\037')\"");
    EXPECT_EQ(ShellLiteral::posix("\xFF"), "\"$(printf '\\377')\"");
}

TEST(ShellLiteralTest, aScriptTravelsAsUtf16OfWhichTheLowByteIsFirst)
{
    EXPECT_EQ(ShellLiteral::powerShellEncoded(""), "powershell -NoProfile -NoLogo -EncodedCommand ");
    EXPECT_EQ(ShellLiteral::powerShellEncoded("gci"), "powershell -NoProfile -NoLogo -EncodedCommand ZwBjAGkA");
    EXPECT_EQ(ShellLiteral::powerShellEncoded("\"\u00E9\"\U0001F600"),
              "powershell -NoProfile -NoLogo -EncodedCommand IgDpACIAPdgA3g==");
}

TEST(ShellLiteralTest, aCallHasEachArgumentAsItIs)
{
    std::array<std::string, 3> const arguments{"-a", "it's", "x,y"};
    EXPECT_EQ(ShellLiteral::powerShellInvoke("7z", arguments), "& 7z @('-a','it''s','x,y')");
    EXPECT_EQ(ShellLiteral::powerShellInvoke("tar", {}), "& tar @()");
}

} // namespace
} // namespace tw::test
