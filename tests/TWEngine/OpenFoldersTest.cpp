#include "TWEngine/Transfer/OpenFolders.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

/// A long name, so that few of them reach the bound.
std::string longName(int number)
{
    return std::to_string(number) + std::string(std::size_t{1} << 20U, 'x');
}

constexpr int tooMany = OpenFolders::mostAwaitedBytes / (std::size_t{1} << 20U) + 1;

TEST(OpenFoldersTest, theFoldersOfAFolderMayBeEnteredAfterAllOfItsEntries)
{
    OpenFolders folders;
    folders.add("a");
    ASSERT_TRUE(folders.enter("a"));
    for (auto const *const name : {"1", "2", "3"})
        folders.add(name);
    for (auto const *const folder : {"a/3", "a/1", "a/2", "a", ""})
        EXPECT_TRUE(folders.enter(folder)) << folder;
    EXPECT_FALSE(folders.enter("a/1"));
}

TEST(OpenFoldersTest, moreFoldersThanAreRememberedMayPassIfTheirMembersFollowThem)
{
    OpenFolders folders;
    for (int number = 0; number < tooMany; ++number) {
        ASSERT_TRUE(folders.enter(""));
        folders.add(longName(number));
        ASSERT_TRUE(folders.enter(longName(number)));
    }
}

TEST(OpenFoldersTest, ofTooManyFoldersTheOldestAreForgotten)
{
    OpenFolders folders;
    for (int number = 0; number < tooMany; ++number)
        folders.add(longName(number));
    EXPECT_TRUE(folders.enter(longName(tooMany - 1)));
    EXPECT_FALSE(folders.enter(longName(0)));
}

} // namespace
} // namespace tw::test
