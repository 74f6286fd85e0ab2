#include "TWEngine/Browsing/LocalFacts.h"

#include "TWCore/Model/FileOperationError.h"
#include "tests/support/DiskRows.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using State = FolderFacts::State;

class LocalFactsTest : public testing::Test {
protected:
    static FileIdentity identityOf(std::string const &path)
    {
        struct stat status;
        EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
        return {.device = status.st_dev, .inode = status.st_ino};
    }

    TemporaryFolder folder;
};

TEST_F(LocalFactsTest, whatHasANameIsDescribedInTheOrderOfTheQuestion)
{
    auto const file = folder.file("file", "12345");
    timespec const times[2] = {{.tv_sec = -5, .tv_nsec = 0}, {.tv_sec = -5, .tv_nsec = 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    folder.link("dangling", "nowhere");
    auto const facts = localFactsAbout(folder.path(), {"dangling", "none", "file"});
    EXPECT_EQ(facts.state, State::present);
    ASSERT_THAT(facts.taken, SizeIs(2));
    EXPECT_EQ(facts.taken[0].name, "dangling");
    EXPECT_EQ(facts.taken[0].kind, EntryKind::symlink);
    EXPECT_EQ(facts.taken[1].kind, EntryKind::file);
    EXPECT_EQ(facts.taken[1].size, 5);
    EXPECT_EQ(facts.taken[1].mtime, -5);
    EXPECT_EQ(facts.taken[1].identity, identityOf(file));
}

TEST_F(LocalFactsTest, aMountPointIsSaidToBeOne)
{
    auto const facts = localFactsAbout("/", {"proc", "usr"});
    ASSERT_THAT(facts.taken, SizeIs(2));
    EXPECT_TRUE(facts.taken[0].isMountPoint);
    EXPECT_FALSE(facts.taken[1].isMountPoint);
}

TEST_F(LocalFactsTest, namesOfAllBytesAreFound)
{
    auto const names = hostileNames();
    for (auto const &name : names)
        folder.file(name);
    EXPECT_THAT(localFactsAbout(folder.path(), names).taken, SizeIs(names.size()));
}

TEST_F(LocalFactsTest, aFolderIsKnownByItsRealPathAndTheWayToIt)
{
    auto const inner = folder.folder("outer/inner");
    auto const facts = localFactsAbout(folder.link("link", inner), {});
    EXPECT_EQ(facts.realPath, std::filesystem::canonical(inner));
    ASSERT_GE(facts.way.size(), 3U);
    EXPECT_EQ(facts.way[0], identityOf(inner));
    EXPECT_EQ(facts.way[1], identityOf(folder.path("outer")));
    EXPECT_EQ(facts.way[2], identityOf(folder.path()));
    EXPECT_EQ(facts.way.back(), identityOf("/"));
    EXPECT_THAT(localFactsAbout("/", {}).way, ElementsAre(identityOf("/")));
}

TEST_F(LocalFactsTest, whatIsNoFolderIsSaidToBeNone)
{
    auto const file = folder.file("file");
    EXPECT_EQ(localFactsAbout(folder.path("none"), {}).state, State::missing);
    EXPECT_EQ(localFactsAbout(file + "/below", {}).state, State::missing);
    EXPECT_EQ(localFactsAbout(file, {}).state, State::notAFolder);
    EXPECT_EQ(localFactsAbout(folder.link("dangling", "none"), {}).state, State::notAFolder);
}

TEST_F(LocalFactsTest, aNameThatCannotBeIsFree)
{
    auto const facts = localFactsAbout(folder.path(), {std::string(300, 'x'), std::string("a\0b", 3)});
    EXPECT_THAT(facts.taken, IsEmpty());
}

TEST_F(LocalFactsTest, casesAreTwoNamesHere)
{
    EXPECT_FALSE(localFactsAbout(folder.path(), {}).takesCasesForOne);
    folder.file("Name");
    folder.link("nAME", "Name");
    EXPECT_FALSE(localFactsAbout(folder.path(), {}).takesCasesForOne);
}

TEST_F(LocalFactsTest, aFolderThatTakesCasesForOneIsRecognised)
{
    // As on such a file system, both spellings lead to one file.
    auto const file = folder.file("Name");
    ASSERT_EQ(::link(file.c_str(), folder.path("nAME").c_str()), 0);
    EXPECT_TRUE(localFactsAbout(folder.path(), {}).takesCasesForOne);
}

} // namespace
} // namespace tw::test
