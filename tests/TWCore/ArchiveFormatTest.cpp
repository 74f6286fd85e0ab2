#include "TWCore/Archives/ArchiveFormat.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using enum ArchiveFormat;

TEST(ArchiveFormatTest, theEndOfANameTellsTheFormat)
{
    for (auto const *name : {"a.tar.gz", "a.tgz", "a.tar", "BACKUP.TAR.GZ", ".tar"})
        EXPECT_EQ(detectArchiveFormat(name), tarGz) << name;
    for (auto const *name : {"a.zip", "A.Zip", ".zip"})
        EXPECT_EQ(detectArchiveFormat(name), zip) << name;
    for (auto const *name : {"a.7z", "A.7Z"})
        EXPECT_EQ(detectArchiveFormat(name), sevenZip) << name;
}

TEST(ArchiveFormatTest, everyOtherNameIsNoArchive)
{
    for (auto const *name : {"", "a", "zip", "a.tgz.txt", "a.tar.bz2", "a.tar.xz", "a.gz", "a.zip/"})
        EXPECT_EQ(detectArchiveFormat(name), std::nullopt) << name;
}

TEST(ArchiveFormatTest, eachFormatHasANameToStoreAndOneToShow)
{
    EXPECT_EQ(rawText(tarGz), "tarGz");
    EXPECT_EQ(rawText(zip), "zip");
    EXPECT_EQ(rawText(sevenZip), "sevenZip");
    EXPECT_EQ(displayName(tarGz), "tar.gz");
    EXPECT_EQ(displayName(zip), "zip");
    EXPECT_EQ(displayName(sevenZip), "7z");
}

} // namespace
} // namespace tw::test
