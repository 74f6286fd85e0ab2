#include "tests/support/ListingStoreTest.h"

#include "TWCore/Model/SnapshotCodec.h"

#include <gmock/gmock.h>

#include <latch>

namespace tw::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;

class ListingStoreRowsTest : public ListingStoreTest {
protected:
    ListingStoreRowsTest() { open(); }

    /// A row that says of itself that it has that size.
    void insertRow(std::string const &path, std::int64_t bytes, std::chrono::seconds age)
    {
        auto const now = std::chrono::floor<std::chrono::seconds>(clock->now()).time_since_epoch();
        ASSERT_EQ(runSql("INSERT INTO listings (provider, path, fetched, bytes, blob) VALUES ('p', '" + path + "', " +
                         std::to_string((now - age).count()) + ", " + std::to_string(bytes) + ", x'00')"),
                  SqliteResult::done);
    }

    bool hasRow(std::string const &path)
    {
        return numberOf("SELECT COUNT(*) FROM listings WHERE path = '" + path + "'") == 1;
    }

    std::int64_t rows() { return numberOf("SELECT COUNT(*) FROM listings"); }

    void trim() { loop.run(store->trim()); }

    void reopenWith(ListingStore::Limits other)
    {
        close();
        limits = other;
        ASSERT_TRUE(open());
    }
};

TEST_F(ListingStoreRowsTest, whatWasSavedIsLoadedWithAllThatItHas)
{
    auto const saved =
        listing("/srv", {file("a", 3, 4), directory("b"), symlink("\xFF\n")}, clock->now(), Completeness::truncated);
    loop.run(store->save(host, {{"/srv", saved}}));
    auto const loaded = load("/srv");
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->path(), "/srv");
    EXPECT_EQ(names(*loaded), names(saved));
    EXPECT_TRUE(std::ranges::equal(loaded->entries(), saved.entries()));
    EXPECT_TRUE(loaded->truncated());
    EXPECT_EQ(loaded->fetchedAt(), std::chrono::floor<std::chrono::seconds>(clock->now()));
}

TEST_F(ListingStoreRowsTest, whatWasSavedIsThereAfterARestart)
{
    save("/srv", {file("a")});
    close();
    ASSERT_TRUE(open());
    EXPECT_TRUE(has("/srv"));
}

TEST_F(ListingStoreRowsTest, aWholeScanIsSavedAtOnce)
{
    Listings scan;
    for (int i = 0; i < 300; ++i) {
        auto const path = "/srv/" + std::to_string(i);
        scan.emplace(path, listing(path, {file(std::to_string(i))}, clock->now()));
    }
    loop.run(store->save(host, scan));
    EXPECT_EQ(statistics().rows, 300);
    EXPECT_THAT(names(*load("/srv/299")), ElementsAre("299"));
}

TEST_F(ListingStoreRowsTest, anEmptyScanIsNothingToSave)
{
    loop.run(store->save(host, {}));
    EXPECT_EQ(statistics().rows, 0);
}

TEST_F(ListingStoreRowsTest, aRowTellsWhatItHolds)
{
    save("/srv", {file("a"), file("b")});
    EXPECT_EQ(numberOf("SELECT bytes = LENGTH(blob) FROM listings"), 1);
    EXPECT_EQ(numberOf("SELECT fetched FROM listings"),
              std::chrono::floor<std::chrono::seconds>(clock->now()).time_since_epoch().count());
    EXPECT_EQ(numberOf("SELECT provider = 'ssh-cache:host' AND path = '/srv' FROM listings"), 1);
    EXPECT_EQ(statistics().bytes, 24 + 2 * 27 + 2);
}

TEST_F(ListingStoreRowsTest, onePathAtTwoProvidersIsTwoRows)
{
    saveAs("one", "/a", {file("of one")});
    saveAs("two", "/a", {file("of two")});
    EXPECT_EQ(statistics().rows, 2);
    EXPECT_THAT(names(*load("/a", "one")), ElementsAre("of one"));
    EXPECT_THAT(names(*load("/a", "two")), ElementsAre("of two"));
}

TEST_F(ListingStoreRowsTest, aSecondSaveReplacesTheRowAndKeepsItsIdentity)
{
    save("/srv", {file("old")});
    auto const id = numberOf("SELECT id FROM listings");
    save("/elsewhere", {});
    clock->advance(5s);
    save("/srv", {file("new"), file("newer")});
    EXPECT_THAT(names(*load("/srv")), ElementsAre("new", "newer"));
    EXPECT_EQ(statistics().rows, 2);
    EXPECT_EQ(numberOf("SELECT id FROM listings WHERE path = '/srv'"), id);
}

TEST_F(ListingStoreRowsTest, aPathIsBytesAndNothingInItIsTakenForAStatement)
{
    for (auto const &path : {std::string("/'); DELETE FROM listings; --"), std::string("/\xFF\xFE"),
                             std::string("/a\0b", 4), std::string("/a"), std::string("")})
        save(path, {file("of " + std::to_string(path.size()))});
    EXPECT_EQ(statistics().rows, 5);
    EXPECT_THAT(names(*load(std::string("/a\0b", 4))), ElementsAre("of 4"));
    EXPECT_TRUE(has("/\xFF\xFE"));
    EXPECT_TRUE(has(""));
}

TEST_F(ListingStoreRowsTest, findingAndNotFindingAreCounted)
{
    save("/srv", {});
    load("/srv");
    load("/srv");
    load("/nowhere");
    EXPECT_EQ(statistics().hits, 2);
    EXPECT_EQ(statistics().misses, 1);
}

TEST_F(ListingStoreRowsTest, anOldRowIsNotFoundAndStaysUntilItIsTrimmed)
{
    reopenWith({.maxAge = 100s});
    save("/srv", {file("a")});
    clock->advance(99s);
    EXPECT_TRUE(has("/srv"));
    clock->advance(2s);
    EXPECT_FALSE(has("/srv"));
    EXPECT_EQ(statistics().misses, 1);
    EXPECT_EQ(statistics().rows, 1);
    trim();
    EXPECT_EQ(statistics().rows, 0);
}

TEST_F(ListingStoreRowsTest, aRowAsOldAsRowsMayBeIsStillFound)
{
    reopenWith({.maxAge = 100.25s}); // the clock stands a quarter of a second behind the second that is stored
    save("/srv", {});
    clock->advance(100s);
    EXPECT_TRUE(has("/srv"));
    trim();
    EXPECT_EQ(statistics().rows, 1);
}

TEST_F(ListingStoreRowsTest, aBlobThatDoesNotDecodeIsNotFoundAndStaysUntilItIsReplaced)
{
    save("/srv", {file("a")});
    for (auto const *const blob : {"x'00'", "x''", "CAST('text' AS TEXT)", "17"}) {
        ASSERT_EQ(runSql(std::string("UPDATE listings SET blob = ") + blob), SqliteResult::done);
        EXPECT_FALSE(has("/srv")) << blob;
    }
    EXPECT_EQ(statistics().misses, 4);
    EXPECT_EQ(statistics().rows, 1);
    save("/srv", {file("a")});
    EXPECT_TRUE(has("/srv"));
}

TEST_F(ListingStoreRowsTest, aRemovedPathIsForgottenAtThatProviderOnly)
{
    saveAs("one", "/a", {});
    saveAs("one", "/a/b", {});
    saveAs("two", "/a", {});
    loop.run(store->remove("one", "/a"));
    EXPECT_FALSE(has("/a", "one"));
    EXPECT_TRUE(has("/a/b", "one"));
    EXPECT_TRUE(has("/a", "two"));
    loop.run(store->remove("one", "/never there"));
    EXPECT_EQ(statistics().rows, 2);
}

TEST_F(ListingStoreRowsTest, aRemovedTreeIsForgottenWithAllBelowItAndNothingBesideIt)
{
    std::vector<std::string> const paths{"/a", "/a/b", "/a/b/c", "/a-b", "/a0", "/ab", "/b/a", "/a/\xff\xfe"};
    for (auto const &path : paths)
        saveAs("one", path, {});
    saveAs("two", "/a/b", {});
    loop.run(store->removeTree("one", "/a"));
    std::vector<std::string> left;
    for (auto const &path : paths) {
        if (has(path, "one"))
            left.push_back(path);
    }
    EXPECT_EQ(left, (std::vector<std::string>{"/a-b", "/a0", "/ab", "/b/a"}));
    EXPECT_TRUE(has("/a/b", "two"));
    loop.run(store->removeTree("one", "/"));
    EXPECT_EQ(statistics().rows, 1);
}

TEST_F(ListingStoreRowsTest, aRemovedProviderIsForgottenWhole)
{
    saveAs("one", "/a", {});
    saveAs("one", "/b", {});
    saveAs("two", "/a", {});
    loop.run(store->removeAll("one"));
    EXPECT_EQ(statistics().rows, 1);
    EXPECT_TRUE(has("/a", "two"));
}

TEST_F(ListingStoreRowsTest, trimmingLeavesWhatFits)
{
    reopenWith({.maxBytes = 300});
    insertRow("/a", 100, 30s);
    insertRow("/b", 100, 20s);
    insertRow("/c", 100, 10s);
    trim();
    EXPECT_EQ(rows(), 3);
}

TEST_F(ListingStoreRowsTest, trimmingDeletesTheOldestRowsThatAreOver)
{
    reopenWith({.maxBytes = 200});
    insertRow("/newest", 100, 10s);
    insertRow("/oldest", 60, 40s);
    insertRow("/old", 40, 30s);
    insertRow("/newer", 100, 20s);
    trim();
    EXPECT_FALSE(hasRow("/oldest"));
    EXPECT_FALSE(hasRow("/old"));
    EXPECT_TRUE(hasRow("/newer"));
    EXPECT_TRUE(hasRow("/newest"));
}

TEST_F(ListingStoreRowsTest, aRowThatIsLargerThanWhatIsOverSurvivesTheTrimming)
{
    reopenWith({.maxBytes = 200});
    insertRow("/oldest", 150, 40s);
    insertRow("/newest", 150, 10s);
    trim();
    EXPECT_EQ(rows(), 2);
}

TEST_F(ListingStoreRowsTest, rowsOfOneScanAreTrimmedTogetherOrNotAtAll)
{
    reopenWith({.maxBytes = 200});
    insertRow("/a", 60, 40s);
    insertRow("/b", 60, 40s);
    insertRow("/c", 180, 10s);
    trim();
    EXPECT_EQ(rows(), 3);
    insertRow("/d", 20, 10s);
    trim();
    EXPECT_EQ(rows(), 2);
}

TEST_F(ListingStoreRowsTest, muchIsTrimmedJustAsLittle)
{
    constexpr std::int64_t mebibyte = 1 << 20;
    reopenWith({.maxBytes = 10 * mebibyte, .maxAge = 1000s});
    // Of 1,500 rows that are too old none is left, of 125 MiB that are not, what fits.
    ASSERT_EQ(runSql("WITH RECURSIVE number(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM number WHERE n < 2500)\n"
                     "INSERT INTO listings (provider, path, fetched, bytes, blob)\n"
                     "SELECT 'p', n, " +
                     std::to_string(std::chrono::floor<std::chrono::seconds>(clock->now()).time_since_epoch().count()) +
                     " - n, " + std::to_string(mebibyte / 8) + ", x'00' FROM number"),
              SqliteResult::done);
    trim();
    EXPECT_EQ(rows(), 80);
    EXPECT_TRUE(hasRow("1"));
    EXPECT_TRUE(hasRow("80"));
}

TEST_F(ListingStoreRowsTest, oneScanThatIsOverIsTrimmedHoweverLargeItIs)
{
    constexpr std::int64_t mebibyte = 1 << 20;
    reopenWith({.maxBytes = 10 * mebibyte});
    for (auto const *const path : {"/a", "/b", "/c"})
        insertRow(path, 12 * mebibyte, 20s);
    insertRow("/d", mebibyte, 10s);
    trim();
    EXPECT_EQ(rows(), 4) << "without the scan there would be less than fits";
    insertRow("/e", 9 * mebibyte, 10s);
    trim();
    EXPECT_EQ(rows(), 2);
}

TEST_F(ListingStoreRowsTest, aClosedStoreKnowsNothingAndForgetsNothing)
{
    save("/srv", {file("a")});
    load("/srv");
    loop.run(store->close());
    EXPECT_FALSE(has("/srv"));
    save("/more", {});
    loop.run(store->remove(host, "/srv"));
    loop.run(store->removeAll(host));
    trim();
    auto const after = statistics();
    EXPECT_EQ(after.rows, 0);
    EXPECT_EQ(after.bytes, 0);
    EXPECT_EQ(after.hits, 1);
    EXPECT_EQ(after.misses, 0);
    close();
    ASSERT_TRUE(open());
    EXPECT_TRUE(has("/srv"));
    EXPECT_FALSE(has("/more"));
}

/// A store whose only thread is held until the test lets it go, so that what is asked meanwhile is asked at once.
class ListingStoreTurnsTest : public ListingStoreTest {
protected:
    ListingStoreTurnsTest()
    {
        limits.maxAge = 1000s;
        store = ListingStore::create(pool, clock, cacheFolder, limits);
        EXPECT_EQ(runSql("WITH RECURSIVE number(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM number WHERE n < 3000)\n"
                         "INSERT INTO listings (provider, path, fetched, bytes, blob)\n"
                         "SELECT 'p', n, 0, 1, x'00' FROM number"),
                  SqliteResult::done);
        save("/srv", {file("a")});
        pool.executor(WorkPriority::interactive)->post([this] { held.wait(); });
    }

    ~ListingStoreTurnsTest() override { close(); } // while there is a thread to close it on

    template <class T>
    static Task<void> noteEnd(std::vector<std::string> *ends, std::string name, Task<T> task)
    {
        auto running = std::move(task);
        co_await std::move(running);
        ends->push_back(std::move(name));
    }

    std::latch held{1};
    WorkerPool pool{{.interactive = 1, .background = 0}};
};

TEST_F(ListingStoreTurnsTest, aLoadDoesNotWaitForAllOfATrimming)
{
    std::vector<std::string> ends;
    loop.start(noteEnd(&ends, "trimmed", store->trim()));
    loop.start(noteEnd(&ends, "loaded", store->load(host, "/srv")));
    loop.drain();
    held.count_down();
    loop.runUntil([&] { return ends.size() == 2; });
    EXPECT_THAT(ends, ElementsAre("loaded", "trimmed"));
    EXPECT_EQ(statistics().rows, 1);
}

TEST_F(ListingStoreTurnsTest, aStoppedTrimmingEndsWithItsTurn)
{
    auto const trimming = loop.start(store->trim());
    trimming.stop();
    loop.drain();
    held.count_down();
    loop.runUntil([&] { return trimming.isDone(); });
    EXPECT_FALSE(trimming.failed());
    EXPECT_EQ(statistics().rows, 3001);
}

} // namespace
} // namespace tw::test
