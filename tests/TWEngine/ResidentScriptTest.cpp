#include "TWEngine/Shell/ResidentScript.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

int countOf(std::string_view text, std::string_view wanted)
{
    int count = 0;
    for (auto at = text.find(wanted); at != std::string_view::npos; at = text.find(wanted, at + wanted.size()))
        ++count;
    return count;
}

TEST(ResidentScriptTest, beginsWithTheLocaleAndTheBudget)
{
    EXPECT_TRUE(ResidentScript::posix("0123456789abcdef", 8388608).starts_with("export LC_ALL=C\nTW_MAX=8388608\n"));
}

TEST(ResidentScriptTest, theMarkerOfEveryServiceAndOfTheHandshakeHasTheNonce)
{
    auto const script = ResidentScript::posix("0123456789abcdef", 100);
    EXPECT_EQ(countOf(script, "printf '@@TW0123456789abcdef:%s:%s@@\\n' \"$id\" \"$st\"\n"), 4);
    EXPECT_EQ(countOf(script, "@@TW0123456789abcdef:0:0@@\\n"), 1);
    EXPECT_EQ(countOf(script, "@@TW"), 5);
}

TEST(ResidentScriptTest, nothingIsLeftToBeFilledIn)
{
    auto const script = ResidentScript::posix("0123456789abcdef", 100);
    EXPECT_EQ(countOf(script, "{NONCE}"), 0);
    EXPECT_EQ(countOf(script, "{MAX}"), 0);
}

TEST(ResidentScriptTest, isAsciiWithLineFeedsOnlySoThatNothingOnTheWayChangesIt)
{
    for (auto const byte : ResidentScript::posix("0123456789abcdef", 100))
        ASSERT_TRUE(byte == '\n' || (byte >= ' ' && byte <= '~')) << static_cast<int>(byte);
}

TEST(ResidentScriptTest, theProgramForPerlIsOneQuotedWord)
{
    auto const script = ResidentScript::posix("0123456789abcdef", 100);
    auto const start = script.find("perl -e '") + std::string_view("perl -e '").size();
    auto const end = script.find("' \"$1\" \"$2\" 2>/dev/null", start);
    ASSERT_NE(end, std::string::npos);
    EXPECT_EQ(script.find('\'', start), end);
}

} // namespace
} // namespace tw::test
