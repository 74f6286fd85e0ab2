#include "TWEngine/Platform/PrivateFile.h"

#include "tests/support/DiskRows.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tw::test {
namespace {

using testing::ElementsAre;

class PrivateFileTest : public testing::Test {
protected:
    PrivateFileTest() : before(::umask(0)) {} // a generous user must not make it anybody else's

    ~PrivateFileTest() override { ::umask(before); }

    static mode_t modeOf(std::string const &path)
    {
        struct stat status{};
        EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
        return status.st_mode & 0777U;
    }

    TemporaryFolder folder;

private:
    mode_t const before;
};

TEST_F(PrivateFileTest, foldersAreMadeForTheirUserOnly)
{
    EXPECT_TRUE(PrivateFile::makeFolderOf(folder.path("a/b/file")));
    EXPECT_EQ(modeOf(folder.path("a")), 0700U);
    EXPECT_EQ(modeOf(folder.path("a/b")), 0700U);
    EXPECT_TRUE(PrivateFile::makeFolderOf(folder.path("a/b/file")));
}

TEST_F(PrivateFileTest, aFolderWhereAFileIsCannotBeMade)
{
    EXPECT_FALSE(PrivateFile::makeFolderOf(folder.file("file") + "/folder/file"));
}

TEST_F(PrivateFileTest, whatIsAppendedStandsBehindWhatWasThere)
{
    auto const file = folder.path("file");
    EXPECT_TRUE(PrivateFile::append(file, "one "));
    EXPECT_TRUE(PrivateFile::append(file, "two"));
    EXPECT_EQ(PrivateFile::read(file, 7), "one two");
    EXPECT_EQ(PrivateFile::read(file, 6), std::nullopt) << "more than was asked for";
    EXPECT_EQ(modeOf(file), 0600U);
}

TEST_F(PrivateFileTest, aReplacedFileIsTheNewTextAndNothingElseIsLeft)
{
    auto const file = folder.file("file", "old");
    EXPECT_TRUE(PrivateFile::replace(file, "new"));
    EXPECT_EQ(contentOf(file), "new");
    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_FALSE(PrivateFile::replace(folder.folder("folder"), "new"));
    EXPECT_THAT(namesOnDisk(folder.path()), ElementsAre("file", "folder"));
}

TEST_F(PrivateFileTest, aFileIsMadeOrRestrictedToItsUser)
{
    EXPECT_TRUE(PrivateFile::make(folder.path("new")));
    EXPECT_EQ(modeOf(folder.path("new")), 0600U);
    auto const old = folder.file("old", "text");
    ASSERT_EQ(::chmod(old.c_str(), 0666), 0);
    EXPECT_TRUE(PrivateFile::make(old));
    EXPECT_EQ(modeOf(old), 0600U);
    EXPECT_EQ(contentOf(old), "text");
}

TEST_F(PrivateFileTest, neitherALinkNorAFolderIsMadePrivate)
{
    auto const target = folder.file("target");
    ASSERT_EQ(::chmod(target.c_str(), 0644), 0);
    EXPECT_FALSE(PrivateFile::make(folder.link("link", target)));
    EXPECT_FALSE(PrivateFile::make(folder.link("broken", folder.path("nowhere"))));
    EXPECT_FALSE(PrivateFile::make(folder.folder("folder")));
    EXPECT_EQ(modeOf(target), 0644U);
    EXPECT_THAT(namesOnDisk(folder.path()), ElementsAre("broken", "folder", "link", "target"));
}

TEST_F(PrivateFileTest, whatIsNoFileIsNeitherReadNorWritten)
{
    EXPECT_EQ(PrivateFile::read(folder.path("none"), 10), std::nullopt);
    EXPECT_EQ(PrivateFile::read(folder.path(), 10), std::nullopt);
    EXPECT_FALSE(PrivateFile::append(folder.path(), "text"));
    EXPECT_FALSE(PrivateFile::append("/dev/null", "text"));
    auto const pipe = folder.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(PrivateFile::read(pipe, 10), std::nullopt);
    EXPECT_FALSE(PrivateFile::append(pipe, "text"));
}

} // namespace
} // namespace tw::test
