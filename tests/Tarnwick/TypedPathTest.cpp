#include "Tarnwick/Panes/TypedPath.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

std::optional<std::string> typed(std::string_view text)
{
    return typedPath(text, "/srv/data", "/home/ann");
}

TEST(TypedPathTest, anAbsolutePathIsItself)
{
    EXPECT_EQ(typed("/usr/share"), "/usr/share");
    EXPECT_EQ(typed("/"), "/");
}

TEST(TypedPathTest, aTildeIsTheHomeDirectory)
{
    EXPECT_EQ(typed("~"), "/home/ann");
    EXPECT_EQ(typed("~/"), "/home/ann");
    EXPECT_EQ(typed("~/docs"), "/home/ann/docs");
}

TEST(TypedPathTest, aTildeElsewhereIsAnOrdinarySign)
{
    EXPECT_EQ(typed("~ann"), "/srv/data/~ann");
    EXPECT_EQ(typed("/tmp/~"), "/tmp/~");
}

TEST(TypedPathTest, aRelativePathStartsAtTheFolderOnShow)
{
    EXPECT_EQ(typed("sub/dir"), "/srv/data/sub/dir");
    EXPECT_EQ(typed("."), "/srv/data");
    EXPECT_EQ(typed(".."), "/srv");
    EXPECT_EQ(typed("../other"), "/srv/other");
    EXPECT_EQ(typedPath("x", "/", "/root"), "/x");
}

TEST(TypedPathTest, dotsAndRepeatedSlashesAreResolvedByName)
{
    EXPECT_EQ(typed("/usr//share/./doc/../"), "/usr/share");
    EXPECT_EQ(typed("/../../etc"), "/etc");
    EXPECT_EQ(typed("~/../.."), "/");
    EXPECT_EQ(typed("/..."), "/...");
}

TEST(TypedPathTest, blanksAndLineEndsAroundAPastedPathDoNotCount)
{
    EXPECT_EQ(typed("  /usr/share\r\n"), "/usr/share");
    EXPECT_EQ(typed("/with blank/in it"), "/with blank/in it");
}

TEST(TypedPathTest, nothingLeadsNowhere)
{
    EXPECT_EQ(typed(""), std::nullopt);
    EXPECT_EQ(typed(" \t\n"), std::nullopt);
}

TEST(TypedPathTest, bytesAreKept)
{
    EXPECT_EQ(typed("/srv/\xff"), "/srv/\xff");
}

} // namespace
} // namespace tw::test
