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
        FileSearch::text(ShellDialect::posix, "/it's", {.pattern = "-e 'x'"}, {.from = 100, .to = 1100}, Which::first);
    ASSERT_TRUE(command);
    EXPECT_THAT(*command,
                testing::HasSubstr("{ dd bs=1 skip=100 count=0 2>/dev/null; dd bs=65536 count=1 2>/dev/null; } < "
                                   "'/it'\\''s' | "));
    EXPECT_THAT(*command, testing::HasSubstr(" -m 1 -e '-e '\\''x'\\''' 2>/dev/null | head -n 1"));
}

TEST(FileSearchTest, whatNoCommandFindsIsNotAskedFor)
{
    for (auto const bytes : {"a\nb"sv, "a\0b"sv, ""sv})
        EXPECT_FALSE(FileSearch::text(ShellDialect::posix, "/a", {.pattern = std::string(bytes)}, {}, Which::first));
    EXPECT_FALSE(FileSearch::text(ShellDialect::powershell, "/C:/a", {.pattern = "x"}, {}, Which::first));
}

TEST(FileSearchTest, anAnswerIsAnOffsetInThePart)
{
    Part const part{.from = 1000, .to = 2000};
    EXPECT_EQ(FileSearch::answer("5\n", part).offset, 1005);
    using enum FileSearch::Answer::Kind;
    EXPECT_EQ(FileSearch::answer("none\n", part).kind, searched);
    EXPECT_FALSE(FileSearch::answer("none\n", part).offset);
    EXPECT_EQ(FileSearch::answer("1000\n", part).kind, searched);
    EXPECT_FALSE(FileSearch::answer("1000\n", part).offset) << "it is behind the part";
    EXPECT_EQ(FileSearch::answer("failed\n", part).kind, tooSlow);
    for (auto const *const wrong : {"", "cannot", "-1", "5 6", "grep: x"})
        EXPECT_EQ(FileSearch::answer(wrong, part).kind, unknown) << wrong;
}

} // namespace
} // namespace tw::test
