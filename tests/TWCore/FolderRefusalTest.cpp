#include "TWCore/Model/FolderRefusal.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

TEST(FolderRefusalTest, theReasonsThatPeopleMeetHaveTheirWords)
{
    EXPECT_EQ(folderRefusal("Permission denied"), "permission denied");
    EXPECT_EQ(folderRefusal("No such file or directory"), "no such folder");
    EXPECT_EQ(folderRefusal("Not a directory"), "not a folder");
    EXPECT_EQ(folderRefusal("Too many levels of symbolic links"), "too many links");
}

TEST(FolderRefusalTest, anyOtherReasonIsThatOfTheSystem)
{
    EXPECT_EQ(folderRefusal("Stale file handle"), "stale file handle");
    EXPECT_EQ(folderRefusal("\xC3\x84rger"), "\xC3\x84rger");
    EXPECT_EQ(folderRefusal(""), "cannot be read");
}

} // namespace
} // namespace tw::test
