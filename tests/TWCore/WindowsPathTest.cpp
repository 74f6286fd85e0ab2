#include "TWCore/Model/WindowsPath.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

TEST(WindowsPathTest, onlyOneSlashIsTheRoot)
{
    EXPECT_TRUE(WindowsPath::isRoot("/"));
    EXPECT_FALSE(WindowsPath::isRoot("//"));
    EXPECT_FALSE(WindowsPath::isRoot(""));
    EXPECT_FALSE(WindowsPath::isRoot("/C:"));
    EXPECT_EQ(WindowsPath::root, "/");
}

TEST(WindowsPathTest, theHostKnowsAPathWithoutItsFirstSlash)
{
    EXPECT_EQ(WindowsPath::toNative("/C:/Users/name"), "C:/Users/name");
    EXPECT_EQ(WindowsPath::toNative("/C:"), "C:");
    EXPECT_EQ(WindowsPath::toNative("/"), "");
    EXPECT_EQ(WindowsPath::toNative("//"), "/");
    EXPECT_EQ(WindowsPath::toNative(""), "");
}

TEST(WindowsPathTest, aHostsPathGetsTheRootAndForwardSlashes)
{
    EXPECT_EQ(WindowsPath::fromNative("C:\\Users\\name"), "/C:/Users/name");
    EXPECT_EQ(WindowsPath::fromNative("C:/Users\\name"), "/C:/Users/name");
    EXPECT_EQ(WindowsPath::fromNative(""), "/");
    // A host whose start folder is unknown counts as one that starts at "/"; the drives are listed for what comes out.
    EXPECT_EQ(WindowsPath::fromNative("/"), "//");
}

TEST(WindowsPathTest, aPathWithoutBackslashesComesBackFromTheHost)
{
    for (auto const *path : {"/", "/C:", "/C:/", "/C:/Users/it's", "/D:/\xC3\xA9"})
        EXPECT_EQ(WindowsPath::fromNative(WindowsPath::toNative(path)), path);
}

TEST(WindowsPathTest, aDriveIsShownWithoutTheSlashBeforeIt)
{
    EXPECT_EQ(WindowsPath::display("/C:/x"), "C:/x");
    EXPECT_EQ(WindowsPath::display("/C:"), "C:");
}

TEST(WindowsPathTest, everyOtherPathIsShownAsItIs)
{
    for (auto const *path : {"/", "", "/:", "/a", "/home/x", "/home/C:/x", "/ab:c", "//C:/x", "/\xFF/x"})
        EXPECT_EQ(WindowsPath::display(path), path);
}

} // namespace
} // namespace tw::test
