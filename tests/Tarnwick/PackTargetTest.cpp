#include "Tarnwick/Operations/PackTarget.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace packTarget {
namespace {

using enum ArchiveFormat;

TEST(PackTargetTest, aPathIsOfferedAndFollowsTheFormat)
{
    EXPECT_EQ(PackTarget::suggested("/srv", "a", zip), "/srv/a.zip");
    EXPECT_EQ(PackTarget::suggested("/", "a", tarGz), "/a.tar.gz");
    EXPECT_EQ(PackTarget::withFormat("/srv/a.zip", tarGz), "/srv/a.tar.gz");
    EXPECT_EQ(PackTarget::withFormat("/srv/A.TAR.GZ", sevenZip), "/srv/A.7z");
    EXPECT_EQ(PackTarget::withFormat("/x.zip/a.tgz", zip), "/x.zip/a.zip");
    EXPECT_EQ(PackTarget::withFormat("/x.zip/b", zip), "/x.zip/b.zip");
    EXPECT_EQ(PackTarget::withFormat("v1.2", sevenZip), "v1.2.7z");
}

TEST(PackTargetTest, aNameThatSaysAFormatOnOfferCountsMoreThanTheMenu)
{
    ArchiveFormat const all[] = {zip, sevenZip, tarGz};
    ArchiveFormat const some[] = {tarGz};
    EXPECT_EQ(PackTarget::of("/a.7z", all, zip), (PackTarget{"/a.7z", sevenZip}));
    EXPECT_EQ(PackTarget::of("/a.tar", all, zip), (PackTarget{"/a.tar", tarGz}));
    EXPECT_EQ(PackTarget::of("/a", all, zip), (PackTarget{"/a.zip", zip}));
    EXPECT_EQ(PackTarget::of("/a.7z", some, tarGz), (PackTarget{"/a.7z.tar.gz", tarGz}));
    EXPECT_EQ(PackTarget::of("/a.TGZ", some, tarGz), (PackTarget{"/a.TGZ", tarGz}));
}

} // namespace
} // namespace packTarget
} // namespace tw::test
