#include "TWEngine/Shell/ShellHandshake.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

ShellHandshake taken(std::string_view payload)
{
    ShellHandshake handshake;
    handshake.take(payload);
    return handshake;
}

TEST(ShellHandshakeTest, aHostTellsItsListerItsStartFolderAndItsArchiveTools)
{
    EXPECT_EQ(taken("gnu\t/home/ann\tgnutar,yes,7zz"), (ShellHandshake{"gnu", "/home/ann", "gnutar,yes,7zz"}));
    EXPECT_EQ(taken("\r\nperl\t/Users/a b\tbsdtar,no,no\n"), (ShellHandshake{"perl", "/Users/a b", "bsdtar,no,no"}));
    EXPECT_EQ(taken("gnu\t/home/j\xC3\xBCrgen\tgnutar,no,no").startDirectory, "/home/j\xC3\xBCrgen");
}

TEST(ShellHandshakeTest, whatIsLeftEmptyOrOutKeepsItsValue)
{
    EXPECT_EQ(taken(""), ShellHandshake());
    EXPECT_EQ(taken("perl"), (ShellHandshake{.implementation = "perl"}));
    EXPECT_EQ(taken("perl\t/x"), (ShellHandshake{"perl", "/x", "gnutar,no,no"}));
    EXPECT_EQ(taken("perl\t\tbsdtar,no,no"), (ShellHandshake{"perl", "/", "bsdtar,no,no"}));
}

TEST(ShellHandshakeTest, theFolderOfAWindowsHostLeavesTheStartAtTheRoot)
{
    EXPECT_EQ(taken("powershell\tC:/Users/ann\tbsdtar,no,7z"), (ShellHandshake{"powershell", "/", "bsdtar,no,7z"}));
}

TEST(ShellHandshakeTest, furtherFieldsAreOfALaterVersionAndIgnored)
{
    EXPECT_EQ(taken("gnu\t/x\tgnutar,no,no\tmore\t"), (ShellHandshake{"gnu", "/x", "gnutar,no,no"}));
}

TEST(ShellHandshakeTest, aPayloadThatIsNoTextChangesNothing)
{
    EXPECT_EQ(taken("gnu\t/home/\xFF\tbsdtar,yes,no"), ShellHandshake());
}

TEST(ShellHandshakeTest, aSecondHandshakeReplacesWhatItTells)
{
    auto handshake = taken("gnu\t/home/ann\tgnutar,yes,7zz");
    handshake.take("perl\t\t");
    EXPECT_EQ(handshake, (ShellHandshake{"perl", "/home/ann", "gnutar,yes,7zz"}));
}

} // namespace
} // namespace tw::test
