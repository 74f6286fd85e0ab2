#include "TWCore/Archives/ArchiveTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

ArchiveTree treeOf(std::vector<ArchiveEntry> const &entries)
{
    return ArchiveTree::build(entries, {});
}

/// "d name" or "f name size mtime" of each row.
std::vector<std::string> rowsOf(ArchiveTree const &tree, std::string const &path)
{
    std::vector<std::string> rows;
    auto const &listing = tree.folders.at(path);
    EXPECT_EQ(listing.path(), path);
    EXPECT_FALSE(listing.truncated());
    for (auto const &entry : listing.entries()) {
        EXPECT_EQ(entry.mode, entry.isDirectory() ? 040755 : 0100644);
        auto const name = std::string(listing.nameBytes(entry));
        rows.push_back(entry.isDirectory()
                           ? "d " + name
                           : "f " + name + ' ' + std::to_string(entry.size) + ' ' + std::to_string(entry.mtime));
    }
    return rows;
}

TEST(ArchiveTreeTest, theFoldersAboveAMemberAreThere)
{
    auto const tree = treeOf({{"a/b/c.txt", false, 3, 1.9}});
    EXPECT_THAT(rowsOf(tree, "/"), ElementsAre("d a"));
    EXPECT_THAT(rowsOf(tree, "/a"), ElementsAre("d b"));
    EXPECT_THAT(rowsOf(tree, "/a/b"), ElementsAre("f c.txt 3 1"));
    EXPECT_EQ(tree.folders.size(), 3U);
}

TEST(ArchiveTreeTest, anEmptyArchiveHasItsRoot)
{
    auto const tree = treeOf({});
    EXPECT_THAT(rowsOf(tree, "/"), IsEmpty());
    EXPECT_EQ(tree.folders.size(), 1U);
}

TEST(ArchiveTreeTest, rowsAreInTheOrderOfTheirBytes)
{
    EXPECT_THAT(rowsOf(treeOf({{"b"}, {"\xC3\xA4"}, {"a", true}, {"B"}}), "/"),
                ElementsAre("f B 0 0", "d a", "f b 0 0", "f \xC3\xA4 0 0"));
}

TEST(ArchiveTreeTest, theLastOfTwoMembersOfOneNameCounts)
{
    EXPECT_THAT(rowsOf(treeOf({{"x", false, 1}, {"y"}, {"x", false, 2, 7}}), "/"), ElementsAre("f x 2 7", "f y 0 0"));
}

TEST(ArchiveTreeTest, aMemberCountsMoreThanAFolderThatOnlyMustBeThere)
{
    auto const tree = treeOf({{"x/y"}, {"x", true, 0, 5}});
    ASSERT_EQ(tree.folders.at("/").count(), 1U);
    EXPECT_EQ(tree.folders.at("/").entries()[0].mtime, 5);
}

TEST(ArchiveTreeTest, aNameMayBeAFileAndAFolder)
{
    auto const folderLast = treeOf({{"x", false, 1}, {"x/y"}});
    EXPECT_THAT(rowsOf(folderLast, "/"), ElementsAre("d x"));
    EXPECT_THAT(rowsOf(folderLast, "/x"), ElementsAre("f y 0 0"));
    auto const fileLast = treeOf({{"x/y"}, {"x", false, 1}});
    EXPECT_THAT(rowsOf(fileLast, "/"), ElementsAre("f x 1 0"));
    EXPECT_THAT(rowsOf(fileLast, "/x"), ElementsAre("f y 0 0"));
}

TEST(ArchiveTreeTest, partsThatSayNothingAreNoFolders)
{
    EXPECT_THAT(rowsOf(treeOf({{"a/.//b", false, 1}}), "/a"), ElementsAre("f b 1 0"));
}

TEST(ArchiveTreeTest, membersThatLeadOutOfTheArchiveAreLeftOut)
{
    auto const tree = treeOf({{"../a"}, {"b/../../c"}, {".."}, {"..d"}, {"."}});
    EXPECT_THAT(rowsOf(tree, "/"), ElementsAre("f ..d 0 0"));
    EXPECT_EQ(tree.leftOut, 4U);
}

TEST(ArchiveTreeTest, aPathThatNoSystemOpensIsLeftOut)
{
    auto const tree = treeOf({{std::string(ArchiveTree::longestPath + 1, 'x')}, {"a"}});
    EXPECT_THAT(rowsOf(tree, "/"), ElementsAre("f a 0 0"));
    EXPECT_EQ(tree.leftOut, 1U);
}

TEST(ArchiveTreeTest, membersOfManyFoldersEachDoNotFillTheMemory)
{
    constexpr std::size_t limit = 15'000;
    std::string chain;
    while (chain.size() < 200)
        chain += "/a";
    std::vector<ArchiveEntry> entries;
    for (char top = 'a'; top < 'd'; ++top)
        entries.push_back({.path = top + chain});
    auto const tree = ArchiveTree::build(entries, {}, limit);
    EXPECT_EQ(tree.leftOut, 1U) << "the folders of one chain have 10,100 bytes of paths each";
    EXPECT_EQ(tree.folders.size(), 201U);
}

TEST(ArchiveTreeTest, aDateThatIsNoneIsZero)
{
    EXPECT_THAT(rowsOf(treeOf({{"a", false, 1, 1e300}, {"b", false, 1, -1.5}}), "/"),
                UnorderedElementsAre("f a 1 0", "f b 1 -2"));
}

} // namespace
} // namespace tw::test
