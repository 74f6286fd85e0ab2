#include "TWEngine/Shell/ShellAnswer.h"

#include "TWCore/Shell/Base64.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using enum ShellDialect;

TEST(ShellAnswerTest, aSizeIsANumberWithWhiteSpaceAroundIt)
{
    EXPECT_EQ(ShellAnswer::fileSize("1234\n"), 1234);
    EXPECT_EQ(ShellAnswer::fileSize("\r\n 0\t"), 0);
    EXPECT_EQ(ShellAnswer::fileSize("9223372036854775807"), 9223372036854775807);
    EXPECT_EQ(ShellAnswer::fileSize("-1"), -1);
}

TEST(ShellAnswerTest, anyOtherTextIsNoSize)
{
    for (auto const *payload : {"", "\n", "12 34", "12x", "0x10", "1.5", "9223372036854775808", "\xFF", "1\xFF"})
        EXPECT_EQ(ShellAnswer::fileSize(payload), 0) << payload;
}

TEST(ShellAnswerTest, aPosixHostSendsTheBytesThemselves)
{
    std::string const bytes("\n \0\xFF\r", 5);
    EXPECT_EQ(ShellAnswer::fileBytes(posix, bytes), bytes);
    EXPECT_EQ(ShellAnswer::fileBytes(posix, ""), "");
}

TEST(ShellAnswerTest, aWindowsHostSendsThemInBase64)
{
    std::string const bytes("\n \0\xFF\r", 5);
    EXPECT_EQ(ShellAnswer::fileBytes(powershell, Base64::encode(bytes)), bytes);
    EXPECT_EQ(ShellAnswer::fileBytes(powershell, "\r\n" + Base64::encode(bytes) + "\r\n"), bytes);
    EXPECT_EQ(ShellAnswer::fileBytes(powershell, ""), "");
    EXPECT_EQ(ShellAnswer::fileBytes(powershell, "Access denied"), "");
}

} // namespace
} // namespace tw::test
