#include "TWEngine/Browsing/ForgottenPaths.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using Reach = ForgottenPaths::Reach;

TEST(ForgottenPathsTest, aFetchFromBeforeAPathWasForgottenIsStaleForThatPathOnly)
{
    ForgottenPaths forgotten;
    forgotten.add("/a", Reach::path, 5);
    EXPECT_TRUE(forgotten.isStale("/a", 5));
    EXPECT_TRUE(forgotten.isStale("/a", 1));
    EXPECT_FALSE(forgotten.isStale("/a", 6));
    EXPECT_FALSE(forgotten.isStale("/a/b", 5));
    EXPECT_FALSE(forgotten.isStale("/", 5));
}

TEST(ForgottenPathsTest, aTreeIsForgottenWithAllBelowIt)
{
    ForgottenPaths forgotten;
    forgotten.add("/a", Reach::tree, 5);
    EXPECT_TRUE(forgotten.isStale("/a", 5));
    EXPECT_TRUE(forgotten.isStale("/a/b/c", 5));
    EXPECT_FALSE(forgotten.isStale("/a/b/c", 6));
    EXPECT_FALSE(forgotten.isStale("/ab", 5));
    forgotten.add("/", Reach::tree, 7);
    EXPECT_TRUE(forgotten.isStale("/ab", 6));
    EXPECT_TRUE(forgotten.isStale("/", 7));
}

TEST(ForgottenPathsTest, theLastTimeAPathWasForgottenCounts)
{
    ForgottenPaths forgotten;
    forgotten.add("/a", Reach::path, 5);
    forgotten.add("/a", Reach::path, 9);
    EXPECT_TRUE(forgotten.isStale("/a", 9));
    EXPECT_EQ(forgotten.size(), 1U);
    EXPECT_EQ(forgotten.changes(), 2U);
}

TEST(ForgottenPathsTest, afterAClearNothingIsStaleAndTheChangesStayCounted)
{
    ForgottenPaths forgotten;
    forgotten.add("/a", Reach::tree, 5);
    forgotten.clear();
    EXPECT_FALSE(forgotten.isStale("/a", 5));
    EXPECT_EQ(forgotten.changes(), 1U);
}

TEST(ForgottenPathsTest, moreThanCanBeToldApartMakesEverythingFromBeforeStale)
{
    ForgottenPaths forgotten;
    for (std::size_t index = 0; index < 3 * ForgottenPaths::capacity; ++index) {
        forgotten.add("/" + std::to_string(index), index % 2 == 0 ? Reach::path : Reach::tree, index);
        EXPECT_LE(forgotten.size(), ForgottenPaths::capacity);
        EXPECT_TRUE(forgotten.isStale("/0", 0)) << "nothing that was forgotten comes back";
    }
    EXPECT_TRUE(forgotten.isStale("/other", ForgottenPaths::capacity));
    EXPECT_FALSE(forgotten.isStale("/other", 3 * ForgottenPaths::capacity));
}

TEST(ForgottenPathsTest, theParentOfAPathIsTheFolderThatHoldsIt)
{
    EXPECT_EQ(parentOf("/a/b"), "/a");
    EXPECT_EQ(parentOf("/a"), "/");
    EXPECT_EQ(parentOf("/"), "/");
}

} // namespace
} // namespace tw::test
