#include "TWCore/Shell/FileSearch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::string_view_literals;

using FileSearch::Part;
using FileSearch::Which;

TEST(FileSearchTest, bytesAreOneWordAndThePartIsCutOut)
{
    auto const command =
        FileSearch::text(ShellDialect::posix, "/it's", "-e 'x'", {.from = 100, .to = 1100}, Which::first);
    ASSERT_TRUE(command);
    EXPECT_THAT(*command, testing::HasSubstr("tail -c +101 '/it'\\''s' 2>/dev/null | head -c 1000 | "));
    EXPECT_THAT(*command, testing::HasSubstr(" -m 1 -e '-e '\\''x'\\''' 2>/dev/null | head -n 1"));
}

TEST(FileSearchTest, whatNoCommandFindsIsNotAskedFor)
{
    for (auto const bytes : {"a\nb"sv, "a\0b"sv, ""sv})
        EXPECT_FALSE(FileSearch::text(ShellDialect::posix, "/a", bytes, {}, Which::first));
    EXPECT_FALSE(FileSearch::text(ShellDialect::powershell, "/C:/a", "x", {}, Which::first));
}

TEST(FileSearchTest, anAnswerIsAnOffsetInThePart)
{
    Part const part{.from = 1000, .to = 2000};
    EXPECT_EQ(FileSearch::answer("5\n", part).offset, 1005);
    EXPECT_TRUE(FileSearch::answer("none\n", part).isKnown);
    EXPECT_FALSE(FileSearch::answer("none\n", part).offset);
    for (auto const *const wrong : {"", "cannot", "1000", "-1", "5 6", "grep: x"})
        EXPECT_FALSE(FileSearch::answer(wrong, part).isKnown) << wrong;
}

} // namespace
} // namespace tw::test
