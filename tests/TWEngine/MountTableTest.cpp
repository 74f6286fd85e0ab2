#include "TWEngine/Runtime/MountTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

auto const table = MountTable::parse("27 1 254:0 / / rw,relatime - ext4 /dev/vda rw\n"
                                     "22 27 0:21 / /proc rw,relatime - proc proc rw\n"
                                     "40 27 0:40 / /mnt/nas rw shared:7 - nfs server:/export rw\n"
                                     "41 40 0:41 / /mnt/nas/deep rw - fuse.x x rw\n"
                                     "42 27 0:42 / /mnt/with\\040blank\\134and\\012line rw - tmpfs x rw\n");

TEST(MountTableTest, aPathLiesOnTheMountWithTheLongestPrefix)
{
    EXPECT_EQ(table.mountOf("/"), 27);
    EXPECT_EQ(table.mountOf("/home/ann"), 27);
    EXPECT_EQ(table.mountOf("/mnt"), 27);
    EXPECT_EQ(table.mountOf("/mnt/nas"), 40);
    EXPECT_EQ(table.mountOf("/mnt/nas/a/b"), 40);
    EXPECT_EQ(table.mountOf("/mnt/nas/deep/a"), 41);
}

TEST(MountTableTest, aPrefixEndsWithAWholeName)
{
    EXPECT_EQ(table.mountOf("/mnt/nas2"), 27);
    EXPECT_EQ(table.mountOf("/processes"), 27);
}

TEST(MountTableTest, escapedBytesOfAMountPointAreBytes)
{
    EXPECT_EQ(table.mountOf("/mnt/with blank\\and\nline/x"), 42);
}

TEST(MountTableTest, ofTwoMountsAtOnePlaceTheLaterOneCounts)
{
    auto const stacked = MountTable::parse("30 27 0:30 / /a rw - x x rw\n31 30 0:31 / /a rw - y y rw\n");
    EXPECT_EQ(stacked.mountOf("/a/b"), 31);
}

TEST(MountTableTest, theMountPointsInAFolderAreKnownByName)
{
    EXPECT_THAT(table.mountPointsIn("/"), ElementsAre("proc"));
    EXPECT_THAT(table.mountPointsIn("/mnt"), ElementsAre("nas", "with blank\\and\nline"));
    EXPECT_THAT(table.mountPointsIn("/mnt/nas"), ElementsAre("deep"));
    EXPECT_THAT(table.mountPointsIn("/home"), IsEmpty());
}

TEST(MountTableTest, whatIsNotUnderstoodIsLeftOut)
{
    auto const odd =
        MountTable::parse("\n\nx 1 0:1 / /a rw\n5\n6 1 0:1 / relative rw\n7 1 0:1 / /b\\99 rw\n8 1 0:1 / /c");
    EXPECT_EQ(odd.mountOf("/a"), MountTable::unknown);
    EXPECT_EQ(odd.mountOf("relative"), MountTable::unknown);
    EXPECT_EQ(odd.mountOf(""), MountTable::unknown);
    EXPECT_EQ(odd.mountOf("/b\\99"), 7) << "no octal number";
    EXPECT_EQ(odd.mountOf("/c/d"), 8) << "a line that breaks off behind the mount point";
}

} // namespace
} // namespace tw::test
