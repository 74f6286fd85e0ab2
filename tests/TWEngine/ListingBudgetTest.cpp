#include "TWEngine/Browsing/ListingBudget.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/support/Listings.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Two caches whose owners live on the test's loop.
class ListingBudgetTest : public ::testing::Test {
protected:
    using Cache = std::shared_ptr<ListingCache>;

    void makeBudget(std::size_t bytes) { budget = std::make_shared<ListingBudget>(Strand(loop.context()), bytes); }

    void put(Cache const &cache, std::string const &path, std::size_t bytes, int second)
    {
        auto const when = Timestamp(std::chrono::seconds(second));
        auto const storage = std::make_shared<std::string const>(std::string(bytes, 'n'));
        cache->put({{path, DirectorySnapshot(path, storage, {}, when, false)}}, {.root = path});
        budget->report(strand, cache);
        loop.drain();
    }

    void open(Cache const &cache, std::string const &path, int second)
    {
        cache->touch(*cache->find(path)->group, Timestamp(std::chrono::seconds(second)));
    }

    static std::vector<std::string> held(Cache const &cache, std::vector<std::string> const &paths)
    {
        std::vector<std::string> result;
        for (auto const &path : paths) {
            if (cache->find(path))
                result.push_back(path);
        }
        return result;
    }

    TestLoop loop;
    Strand const strand{loop.context()};
    std::shared_ptr<ListingBudget> budget;
    Cache one = std::make_shared<ListingCache>();
    Cache other = std::make_shared<ListingCache>();
};

TEST_F(ListingBudgetTest, aGroupLargerThanTheBudgetStaysWhenItIsTheNewest)
{
    makeBudget(10);
    put(one, "/a", 100, 1);
    EXPECT_THAT(held(one, {"/a"}), ElementsAre("/a"));
    put(other, "/b", 100, 1);
    EXPECT_THAT(held(one, {"/a"}), IsEmpty());
    EXPECT_THAT(held(other, {"/b"}), ElementsAre("/b"));
}

TEST_F(ListingBudgetTest, evictionStopsAsSoonAsTheBudgetIsMet)
{
    makeBudget(30);
    for (auto const *const path : {"/a", "/b", "/c"})
        put(one, path, 10, 1);
    EXPECT_EQ(one->cachedBytes(), 30U);
    put(one, "/d", 5, 1);
    EXPECT_THAT(held(one, {"/a", "/b", "/c", "/d"}), ElementsAre("/b", "/c", "/d"));
}

TEST_F(ListingBudgetTest, whatWasNotOpenedForTheLongestGoesFirstWhicheverCacheHoldsIt)
{
    makeBudget(40);
    put(one, "/a", 10, 1);
    put(other, "/b", 10, 2);
    put(one, "/c", 10, 3);
    put(other, "/d", 10, 4);
    open(one, "/a", 5);
    put(one, "/e", 20, 6);
    EXPECT_THAT(held(one, {"/a", "/c", "/e"}), ElementsAre("/a", "/e"));
    EXPECT_THAT(held(other, {"/b", "/d"}), ElementsAre("/d"));
}

TEST_F(ListingBudgetTest, aListingThatWasFetchedLongAgoStaysWhileItIsTheNewestToArrive)
{
    makeBudget(10);
    put(one, "/a", 10, 5);
    put(other, "/slow", 10, 1);
    EXPECT_THAT(held(one, {"/a"}), IsEmpty());
    EXPECT_THAT(held(other, {"/slow"}), ElementsAre("/slow"));
}

TEST_F(ListingBudgetTest, whatACacheHasDroppedByItselfIsRoomForOthers)
{
    makeBudget(30);
    put(one, "/a", 10, 1);
    put(one, "/b", 10, 2);
    put(one, "/c", 10, 3);
    one->dropGroupOf("/b");
    put(other, "/d", 10, 4);
    EXPECT_THAT(held(one, {"/a", "/c"}), ElementsAre("/a", "/c"));
}

TEST_F(ListingBudgetTest, aCacheThatIsGoneHoldsNothing)
{
    makeBudget(20);
    put(one, "/a", 20, 1);
    one.reset();
    put(other, "/b", 10, 2);
    put(other, "/c", 10, 3);
    EXPECT_THAT(held(other, {"/b", "/c"}), ElementsAre("/b", "/c"));
}

TEST_F(ListingBudgetTest, growthWhileRoomIsMadeIsMadeRoomForToo)
{
    makeBudget(20);
    put(one, "/a", 10, 1);
    put(one, "/b", 10, 2);
    auto const grow = [&](std::string const &path, int second) {
        auto const storage = std::make_shared<std::string const>(std::string(10, 'n'));
        other->put({{path, DirectorySnapshot(path, storage, {}, Timestamp(std::chrono::seconds(second)), false)}},
                   {.root = path});
        budget->report(strand, other);
    };
    grow("/c", 3);
    grow("/d", 4);
    loop.drain();
    EXPECT_EQ(one->cachedBytes() + other->cachedBytes(), 20U);
    EXPECT_THAT(held(other, {"/c", "/d"}), ElementsAre("/c", "/d"));
}

Task<void> fill(Strand strand, std::shared_ptr<ListingCache> cache, std::shared_ptr<ListingBudget> budget, int path)
{
    auto const where = "/" + std::to_string(path);
    auto const storage = std::make_shared<std::string const>(std::string(100, 'n'));
    cache->put({{where, DirectorySnapshot(where, storage, {}, Timestamp(std::chrono::seconds(path)), false)}},
               {.root = where});
    budget->report(strand, cache);
    co_return;
}

Task<std::size_t> bytesOf(std::shared_ptr<ListingCache> cache)
{
    co_return cache->cachedBytes();
}

TEST_F(ListingBudgetTest, cachesOnManyThreadsEndWithinTheBudget)
{
    constexpr std::size_t limit = 1000;
    EngineRuntime runtime;
    budget = std::make_shared<ListingBudget>(runtime.makeStrand(), limit);
    std::vector<std::pair<Strand, Cache>> owners;
    for (int owner = 0; owner < 8; ++owner)
        owners.emplace_back(runtime.makeStrand(), std::make_shared<ListingCache>());
    for (int round = 0; round < 50; ++round) {
        for (auto const &[ground, cache] : owners)
            loop.start(onStrand(ground, fill(ground, cache, budget, round)));
    }
    auto const sum = [&] {
        std::size_t bytes = 0;
        for (auto const &[ground, cache] : owners)
            bytes += loop.run(onStrand(ground, bytesOf(cache)));
        return bytes;
    };
    loop.runUntil([&] { return sum() == limit; });
    EXPECT_EQ(sum(), limit) << "no less either: what fits stays";
}

} // namespace
} // namespace tw::test
