#include "Tarnwick/Operations/Dialogs.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

std::string described(std::vector<std::string> const &names, std::size_t limit = 8)
{
    return Dialogs::describe(names, limit);
}

TEST(DialogsTest, oneNameIsDescribedByItself)
{
    EXPECT_EQ(described({"a.txt"}), "a.txt");
    EXPECT_EQ(described({"a.txt"}, 0), "a.txt");
}

TEST(DialogsTest, severalNamesAreALineEach)
{
    EXPECT_EQ(described({"a", "b", "c"}, 3), "a\nb\nc");
}

TEST(DialogsTest, namesBeyondTheLimitAreCounted)
{
    EXPECT_EQ(described({"a", "b", "c", "d"}, 2), "a\nb\n… and 2 more");
    EXPECT_EQ(described({"a", "b"}, 1), "a\n… and 1 more");
    EXPECT_EQ(described({"a", "b"}, 0), "… and 2 more");
}

TEST(DialogsTest, noNamesAreNoText)
{
    EXPECT_EQ(described({}), "");
}

TEST(DialogsTest, aNameWithALineEndStaysOnOneLine)
{
    EXPECT_EQ(described({"a\nb", "c"}), "a␊b\nc");
    EXPECT_EQ(described({"caf\xe9"}), "caf\xef\xbf\xbd");
}

} // namespace
} // namespace tw::test
