#include "TWEngine/Browsing/ListingCache.h"

#include "tests/support/Listings.h"

#include <gtest/gtest.h>

#include <random>

namespace tw::test {
namespace {

Timestamp at(int seconds)
{
    return Timestamp(std::chrono::seconds(seconds));
}

/// Listings that share one storage of the given size, as the snapshots of one scan do.
Listings scan(std::vector<std::string> const &paths, std::size_t storageSize, Timestamp when, std::int64_t size = 0)
{
    auto const storage = std::make_shared<std::string const>(std::string(storageSize, 'n'));
    Listings listings;
    for (auto const &path : paths) {
        std::vector<Entry> rows{{.nameOffset = 0, .nameLength = 1, .size = size, .kind = EntryKind::file}};
        listings.emplace(path, DirectorySnapshot(path, storage, std::move(rows), when, false));
    }
    return listings;
}

/// Takes in what the fetch that began last has brought.
ListingCache::Change put(ListingCache &cache, Listings listings, std::string root, int depth, bool hadAllRoom = false)
{
    return cache.put(std::move(listings), {.root = std::move(root), .depth = depth, .hadAllRoom = hadAllRoom});
}

/// What has to hold whatever was done: the count is the sum, and paths and groups know each other.
void expectInvariants(ListingCache const &cache)
{
    std::size_t bytes = 0;
    std::size_t paths = 0;
    for (auto const &[number, group] : cache.liveGroups()) {
        EXPECT_EQ(group->number, number);
        EXPECT_FALSE(group->paths.empty()) << "an empty group is still alive";
        bytes += group->storage->size();
        paths += group->paths.size();
        for (auto const &path : group->paths) {
            auto const *const entry = cache.find(path);
            ASSERT_TRUE(entry) << path;
            EXPECT_EQ(entry->group, group) << path;
        }
    }
    EXPECT_EQ(cache.cachedBytes(), bytes);
    EXPECT_EQ(cache.pathCount(), paths);
}

std::vector<std::uint64_t> numbersOf(std::vector<ListingCache::Unused> const &groups)
{
    std::vector<std::uint64_t> numbers;
    for (auto const &each : groups)
        numbers.push_back(each.number);
    return numbers;
}

TEST(ListingCacheTest, theGroupsThatWereNotOpenedForTheLongestAreNamedFirst)
{
    ListingCache cache;
    put(cache, scan({"/a"}, 10, at(1)), "/a", 1);
    put(cache, scan({"/b"}, 10, at(2)), "/b", 1);
    put(cache, scan({"/c"}, 10, at(2)), "/c", 1);
    put(cache, scan({"/d"}, 10, at(4)), "/d", 1);
    cache.touch(*cache.find("/a")->group, at(3));
    EXPECT_EQ(numbersOf(cache.longestUnused(1)), (std::vector<std::uint64_t>{2}));
    EXPECT_EQ(numbersOf(cache.longestUnused(20)), (std::vector<std::uint64_t>{2, 3}))
        << "the older arrival first among equals";
    EXPECT_EQ(numbersOf(cache.longestUnused(21)), (std::vector<std::uint64_t>{2, 3, 1}));
    EXPECT_EQ(numbersOf(cache.longestUnused(1000)), (std::vector<std::uint64_t>{2, 3, 1, 4}));
    EXPECT_TRUE(cache.longestUnused(0).empty());
}

TEST(ListingCacheTest, theNewestGroupMayHaveToStayAndDoesNotCountAsRoom)
{
    ListingCache cache;
    put(cache, scan({"/a"}, 10, at(5)), "/a", 1);
    put(cache, scan({"/old"}, 10, at(1)), "/old", 1);
    EXPECT_EQ(numbersOf(cache.longestUnused(10)), (std::vector<std::uint64_t>{2, 1}));
    EXPECT_EQ(cache.newestGroup(), 2U);
}

TEST(ListingCacheTest, aGroupThatWasOpenedMeanwhileIsNotEvicted)
{
    ListingCache cache;
    put(cache, scan({"/a"}, 10, at(1)), "/a", 1);
    put(cache, scan({"/b"}, 10, at(2)), "/b", 1);
    auto const unused = cache.longestUnused(1000);
    cache.touch(*cache.find("/a")->group, at(3));
    cache.evict(unused);
    EXPECT_TRUE(cache.find("/a"));
    EXPECT_FALSE(cache.find("/b"));
    EXPECT_EQ(cache.cachedBytes(), 10U);
    expectInvariants(cache);
}

TEST(ListingCacheTest, allGroupsBelowAPathAreDroppedAndNoneBesideIt)
{
    ListingCache cache;
    for (auto const *const path : {"/a", "/a/x", "/a/x/deep", "/ab", "/b"})
        put(cache, scan({path}, 10, at(1)), path, 1);
    cache.dropGroupsBelow("/a");
    EXPECT_TRUE(cache.find("/a"));
    EXPECT_FALSE(cache.find("/a/x"));
    EXPECT_FALSE(cache.find("/a/x/deep"));
    EXPECT_TRUE(cache.find("/ab"));
    expectInvariants(cache);
    cache.dropGroupsBelow("/");
    EXPECT_EQ(cache.pathCount(), 0U);
    EXPECT_EQ(cache.cachedBytes(), 0U);
}

TEST(ListingCacheTest, theBytesOfAGroupStayCountedUntilItsLastPathHasLeft)
{
    ListingCache cache;
    put(cache, scan({"/a", "/a/x", "/a/y"}, 100, at(1)), "/a", 3);
    put(cache, scan({"/a"}, 10, at(2)), "/a", 1);
    put(cache, scan({"/a/x"}, 10, at(3)), "/a/x", 1);
    EXPECT_EQ(cache.cachedBytes(), 120U);
    put(cache, scan({"/a/y"}, 10, at(4)), "/a/y", 1);
    EXPECT_EQ(cache.cachedBytes(), 30U);
    expectInvariants(cache);
}

TEST(ListingCacheTest, droppingOnePathDropsWhatWasScannedAlongWithIt)
{
    ListingCache cache;
    put(cache, scan({"/a", "/a/x", "/a/y"}, 100, at(1)), "/a", 3);
    put(cache, scan({"/a/y"}, 10, at(2)), "/a/y", 1);
    cache.dropGroupOf("/a/x");
    EXPECT_FALSE(cache.find("/a"));
    EXPECT_TRUE(cache.find("/a/y")) << "a newer group had taken it over";
    EXPECT_EQ(cache.cachedBytes(), 10U);
    cache.dropGroupOf("/nowhere");
    expectInvariants(cache);
}

TEST(ListingCacheTest, aPathThatWasNotThereBeforeIsNoChange)
{
    ListingCache cache;
    EXPECT_TRUE(put(cache, scan({"/a"}, 10, at(1)), "/a", 1).changed.empty());
}

TEST(ListingCacheTest, theSameListingInAnotherStorageIsNoChange)
{
    ListingCache cache;
    put(cache, scan({"/a"}, 10, at(1)), "/a", 1);
    EXPECT_TRUE(put(cache, scan({"/a"}, 20, at(2)), "/a", 1).changed.empty());
    EXPECT_EQ(put(cache, scan({"/a"}, 20, at(2), 7), "/a", 1).changed.size(), 1U);
}

TEST(ListingCacheTest, aGroupTakesItsTimesFromTheRootAndFromAnyOtherWhereThereIsNone)
{
    ListingCache cache;
    put(cache, scan({"/other"}, 10, at(5)), "/root", 2);
    auto const *const entry = cache.find("/other");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->group->fetch.root, "/root");
    EXPECT_EQ(entry->group->fetch.depth, 2);
    EXPECT_EQ(entry->group->fetchedAt, at(5));
    EXPECT_EQ(entry->group->lastAccess, at(5));
}

/// The same listings as parts of theirs.
Listings cut(Listings listings)
{
    for (auto &[path, snapshot] : listings) {
        std::vector<Entry> rows(snapshot.entries().begin(), snapshot.entries().end());
        snapshot = DirectorySnapshot(path, snapshot.storage(), std::move(rows), snapshot.fetchedAt(), true);
    }
    return listings;
}

TEST(ListingCacheTest, aPartOfAFolderDoesNotReplaceTheWholeOfItUnlessNoMoreCanBeHad)
{
    auto const replacedBy = [](bool hadAllRoom) {
        ListingCache cache;
        put(cache, scan({"/a"}, 10, at(1)), "/a", 1);
        auto listings = cut(scan({"/a", "/a/y"}, 100, at(2), 7));
        listings.merge(scan({"/a/x"}, 100, at(2), 7));
        auto const change = put(cache, std::move(listings), "/a", 1, hadAllRoom);
        expectInvariants(cache);
        std::vector<std::string> replaced;
        for (auto const *const path : {"/a", "/a/x", "/a/y"}) {
            auto const *const entry = cache.find(path);
            auto const isNew = entry && entry->group->fetchedAt == at(2);
            EXPECT_EQ(isNew, change.taken.contains(path)) << path;
            if (isNew)
                replaced.emplace_back(path);
        }
        return replaced;
    };
    EXPECT_EQ(replacedBy(false), (std::vector<std::string>{"/a/x"}));
    EXPECT_EQ(replacedBy(true), (std::vector<std::string>{"/a", "/a/x", "/a/y"}));
}

TEST(ListingCacheTest, aScanThatBroughtNothingWholeLeavesNothing)
{
    ListingCache cache;
    EXPECT_TRUE(put(cache, cut(scan({"/a"}, 10, at(1))), "/a", 3).taken.empty());
    EXPECT_EQ(cache.cachedBytes(), 0U);
    expectInvariants(cache);
}

TEST(ListingCacheTest, theAnswerToAnEarlierQuestionDoesNotReplaceThatToALaterOne)
{
    ListingCache cache;
    cache.put(scan({"/a"}, 10, at(1), 2), {.root = "/a", .number = 2});
    auto const late = cache.put(scan({"/a", "/a/x"}, 100, at(3), 1), {.root = "/a", .depth = 3, .number = 1});
    EXPECT_TRUE(late.changed.empty());
    EXPECT_FALSE(late.taken.contains("/a"));
    EXPECT_EQ(cache.find("/a")->group->fetchedAt, at(1));
    EXPECT_EQ(cache.find("/a/x")->group->fetchedAt, at(3)) << "of which nothing newer is known";
    EXPECT_TRUE(cache.put(scan({"/a"}, 100, at(3), 2), {.root = "/a", .number = 1}).taken.contains("/a"))
        << "it says the same, and more of the tree came with it";
    EXPECT_EQ(cache.put(scan({"/a"}, 10, at(4), 3), {.root = "/a", .number = 3}).changed.size(), 1U);
    expectInvariants(cache);
}

TEST(ListingCacheTest, adoptingOverACachedPathTakesItFromItsOldGroup)
{
    ListingCache cache;
    put(cache, scan({"/a", "/a/x"}, 100, at(1)), "/a", 2);
    cache.adopt(scan({"/a"}, 10, at(2)).at("/a"), "/a");
    EXPECT_EQ(cache.find("/a")->group->fetch.depth, 1);
    EXPECT_EQ(cache.cachedBytes(), 110U);
    expectInvariants(cache);
}

TEST(ListingCacheTest, clearingLeavesNothing)
{
    ListingCache cache;
    put(cache, scan({"/a", "/a/x"}, 100, at(1)), "/a", 2);
    cache.clear();
    EXPECT_EQ(cache.cachedBytes(), 0U);
    EXPECT_EQ(cache.pathCount(), 0U);
    expectInvariants(cache);
}

/// Folders two levels deep, so that scans overlap in every way.
std::vector<std::string> treeBelow(std::string const &root, int width)
{
    std::vector<std::string> paths{root};
    for (int index = 0; index < width; ++index)
        paths.push_back(root + "/" + static_cast<char>('a' + index));
    return paths;
}

class ListingCacheRandomTest : public ::testing::TestWithParam<unsigned> {};

TEST_P(ListingCacheRandomTest, countsAndMembershipHoldAfterThousandsOfOperations)
{
    std::mt19937 random(GetParam());
    auto const below = [&](unsigned limit) {
        return std::uniform_int_distribution<int>(0, static_cast<int>(limit) - 1)(random);
    };
    auto const anyPath = [&] {
        std::string path = "/";
        path += static_cast<char>('r' + below(5));
        if (below(2) == 0)
            (path += '/') += static_cast<char>('a' + below(6));
        return path;
    };
    ListingCache cache;
    for (int step = 0; step < 4000; ++step) {
        auto const path = anyPath();
        auto const when = at(below(50));
        switch (below(8)) {
        case 0:
            cache.dropGroupOf(path);
            break;
        case 1:
            cache.adopt(scan({path}, static_cast<std::size_t>(1 + below(300)), when).at(path), path);
            break;
        case 2:
        case 3:
            if (auto const *const entry = cache.find(path))
                cache.touch(*entry->group, at(step));
            break;
        default:
            put(cache, scan(treeBelow(path, below(7)), static_cast<std::size_t>(1 + below(500)), when, below(3)), path,
                2);
            EXPECT_TRUE(cache.find(path));
        }
        if (cache.cachedBytes() > 2000) {
            auto const over = cache.cachedBytes() - 2000;
            auto const before = cache.cachedBytes();
            cache.evict(cache.longestUnused(over));
            EXPECT_GE(before - cache.cachedBytes(), over);
        }
        expectInvariants(cache);
        if (HasFailure())
            break;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ListingCacheRandomTest, ::testing::Values(1U, 2U, 3U, 20261121U));

} // namespace
} // namespace tw::test
