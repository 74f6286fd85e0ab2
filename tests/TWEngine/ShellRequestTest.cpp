#include "TWEngine/Shell/ShellRequest.h"

#include <gtest/gtest.h>

#include <limits>

namespace tw::test {
namespace {

using enum ShellDialect;

/// The line that a PowerShell host is sent for `text`.
std::string powerShellLine(std::string_view text)
{
    return encodeRequest(powershell, text) + "\r\n";
}

TEST(ShellRequestTest, aListingAsksForADepthAndAPath)
{
    EXPECT_EQ(ShellRequest::list(posix, "/srv/it's", 3).numbered(12), "{ tw_list 12 3 '/srv/it'\\''s' </dev/null; }\n");
    EXPECT_EQ(ShellRequest::list(powershell, "/C:/it's", 3).numbered(12), powerShellLine("TWList 12 3 'C:/it''s'"));
}

TEST(ShellRequestTest, theDrivesOfAWindowsHostAreThoseOfTheEmptyPath)
{
    EXPECT_EQ(ShellRequest::list(powershell, "/", 1).numbered(1), powerShellLine("TWList 1 1 ''"));
    EXPECT_EQ(ShellRequest::list(powershell, "//", 1).numbered(1), powerShellLine("TWList 1 1 '/'"));
}

TEST(ShellRequestTest, aSizeAsksForAPath)
{
    EXPECT_EQ(ShellRequest::size(posix, "/a b").numbered(1), "{ tw_size 1 '/a b' </dev/null; }\n");
    EXPECT_EQ(ShellRequest::size(powershell, "/C:/a b").numbered(1), powerShellLine("TWSize 1 'C:/a b'"));
}

TEST(ShellRequestTest, aRangeOfAFileIsItsPathOffsetAndLength)
{
    constexpr auto farthest = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(ShellRequest::read(posix, "/f", farthest, 65536).numbered(2),
              "{ tw_read 2 '/f' 9223372036854775807 65536 </dev/null; }\n");
    EXPECT_EQ(ShellRequest::read(powershell, "/C:/f", 0, 10).numbered(2), powerShellLine("TWRead 2 'C:/f' 0 10"));
}

TEST(ShellRequestTest, aCommandIsQuotedForPosixAndBase64ForPowerShell)
{
    EXPECT_EQ(ShellRequest::run(posix, "echo 'a'").numbered(3), "{ tw_run 3 'echo '\\''a'\\''' </dev/null; }\n");
    EXPECT_EQ(ShellRequest::run(powershell, "gci").numbered(3), powerShellLine("TWRun 3 'Z2Np'"));
}

TEST(ShellRequestTest, aRequestCanBeNumberedWithAnyNumberAndMoreThanOnce)
{
    auto const request = ShellRequest::size(posix, "/f");
    EXPECT_EQ(request.numbered(1), "{ tw_size 1 '/f' </dev/null; }\n");
    EXPECT_EQ(request.numbered(std::numeric_limits<std::uint64_t>::max()),
              "{ tw_size 18446744073709551615 '/f' </dev/null; }\n");
}

TEST(ShellRequestTest, aNameThatLooksLikeAPlaceForTheNumberIsAName)
{
    EXPECT_EQ(ShellRequest::list(posix, "/%ID%/{}/%s", 1).numbered(4), "{ tw_list 4 1 '/%ID%/{}/%s' </dev/null; }\n");
}

TEST(ShellRequestTest, aPowerShellRequestIsOneLineWhateverIsInIt)
{
    auto const line = ShellRequest::run(powershell, "a\r\nb").numbered(1);
    EXPECT_EQ(line.find('\r'), line.size() - 2);
    EXPECT_EQ(line.find('\n'), line.size() - 1);
}

} // namespace
} // namespace tw::test
