#include "TWEngine/Browsing/RecentMap.h"

#include "TWEngine/Browsing/ScanDepths.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

TEST(RecentMapTest, whatWasSetLongestAgoIsForgottenFirst)
{
    RecentMap<int> map(2);
    map.set("a", 1);
    map.set("b", 2);
    map.set("a", 3);
    map.set("c", 4);
    ASSERT_TRUE(map.find("a"));
    EXPECT_EQ(*map.find("a"), 3);
    EXPECT_FALSE(map.find("b"));
    EXPECT_TRUE(map.find("c"));
    EXPECT_EQ(map.size(), 2U);
}

TEST(RecentMapTest, whatWasErasedLeavesRoom)
{
    RecentMap<int> map(3);
    for (auto const *const key : {"ab", "b", "ac"})
        map.set(key, 1);
    map.eraseIf([](std::string const &key) { return key.starts_with('a'); });
    EXPECT_EQ(map.size(), 1U);
    map.set("d", 1);
    map.set("e", 1);
    EXPECT_TRUE(map.find("b"));
    map.clear();
    EXPECT_FALSE(map.find("b"));
    EXPECT_EQ(map.size(), 0U);
}

TEST(ScanDepthsTest, eachScanThatWasTooMuchIsFollowedByOneLessDeep)
{
    ScanDepths depths;
    EXPECT_EQ(depths.depthFor("/a", 3), 3);
    depths.lower("/a", 3);
    EXPECT_EQ(depths.depthFor("/a", 3), 2);
    EXPECT_EQ(depths.depthFor("/b", 3), 3);
    depths.lower("/a", 2);
    EXPECT_EQ(depths.depthFor("/a", 3), 1);
    EXPECT_FALSE(depths.isWide("/a"));
}

TEST(ScanDepthsTest, aFolderOfWhichOneLevelIsTooMuchIsWide)
{
    ScanDepths depths;
    depths.lower("/a", 1);
    EXPECT_TRUE(depths.isWide("/a"));
    EXPECT_EQ(depths.depthFor("/a", 3), 1) << "there is no scan of less than a level";
    depths.clear();
    EXPECT_FALSE(depths.isWide("/a"));
}

TEST(ScanDepthsTest, theFolderThatWasLearnedOfLongestAgoIsForgotten)
{
    ScanDepths depths;
    for (std::size_t index = 0; index <= ScanDepths::capacity; ++index)
        depths.lower("/" + std::to_string(index), 3);
    EXPECT_EQ(depths.depthFor("/0", 3), 3);
    EXPECT_EQ(depths.depthFor("/1", 3), 2);
}

} // namespace
} // namespace tw::test
