#include "tests/support/ListingStoreTest.h"

#include <csignal>
#include <filesystem>

#include <sys/resource.h>

namespace tw::test {
namespace {

/// What the store does while the database cannot be written.
class ListingStoreFaultsTest : public ListingStoreTest {
protected:
    /// Another connection that writes, and holds its lock until it is destroyed.
    SqliteDatabase writer(char const *begin = "BEGIN IMMEDIATE")
    {
        auto connection = SqliteDatabase::open(databasePath());
        if (!connection || connection->run(begin) != SqliteResult::done)
            throw std::runtime_error("the other connection does not get the lock");
        return *std::move(connection);
    }

    /// Some megabytes.
    Listings muchToSave()
    {
        Listings scan;
        std::vector<ListedEntry> const rows(1'000, file("a name of some length, as they are"));
        for (int i = 0; i < 50; ++i)
            scan.emplace("/srv/" + std::to_string(i), listing("/srv/" + std::to_string(i), rows, clock->now()));
        return scan;
    }
};

TEST_F(ListingStoreFaultsTest, aRowThatCannotBeKeptDoesNotKeepTheOthersFromIt)
{
    ASSERT_TRUE(open());
    save("/first", {file("a")});
    ASSERT_EQ(runSql("CREATE TRIGGER refuse BEFORE INSERT ON listings WHEN NEW.path = '/b' "
                     "BEGIN SELECT RAISE(ABORT, 'no'); END"),
              SqliteResult::done);
    Listings listings;
    for (std::string const path : {"/a", "/b", "/c"})
        listings.emplace(path, listing(path, {file("x")}, clock->now()));
    loop.run(store->save(host, std::move(listings)));
    EXPECT_TRUE(has("/a"));
    EXPECT_FALSE(has("/b"));
    EXPECT_TRUE(has("/c"));
}

TEST_F(ListingStoreFaultsTest, aListingIsLoadedWhileAnotherProcessWrites)
{
    ASSERT_TRUE(open());
    save("/srv", {file("a")});
    auto const other = writer();
    EXPECT_TRUE(has("/srv"));
    close();
    ASSERT_TRUE(open());
    EXPECT_TRUE(has("/srv"));
}

TEST_F(ListingStoreFaultsTest, whatCannotBeWrittenIsForgottenAndNotWaitedForWithEachRow)
{
    ASSERT_TRUE(open());
    save("/srv", {file("a")});
    {
        auto const other = writer();
        Listings scan;
        // A wait for each row would take longer than a test may.
        for (int i = 0; i < 5'000; ++i)
            scan.emplace("/srv/" + std::to_string(i), listing("/srv/" + std::to_string(i), {}, clock->now()));
        loop.run(store->save(host, std::move(scan)));
        loop.run(store->remove(host, "/srv"));
        loop.run(store->trim());
        EXPECT_EQ(statistics().rows, 1);
    }
    save("/later", {file("b")});
    EXPECT_TRUE(has("/later"));
    EXPECT_TRUE(has("/srv"));
}

TEST_F(ListingStoreFaultsTest, aStoreThatAnotherProcessIsMakingIsNotReplaced)
{
    ASSERT_TRUE(open());
    save("/kept", {file("a")});
    close();
    {
        auto const other = writer("PRAGMA journal_mode = DELETE; BEGIN EXCLUSIVE");
        EXPECT_FALSE(open());
    }
    ASSERT_TRUE(open());
    EXPECT_TRUE(has("/kept"));
}

/// No file of this process may grow beyond that size: a write fails as it does on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &before);
        set({bytes, before.rlim_max});
    }

    ~FileSizeLimit()
    {
        set(before);
        std::signal(SIGXFSZ, onExcess);
    }

    FileSizeLimit(FileSizeLimit const &) = delete;
    FileSizeLimit &operator=(FileSizeLimit const &) = delete;

private:
    static void set(rlimit limit)
    {
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
            throw std::runtime_error("the size of files cannot be limited");
    }

    rlimit before{};
    void (*const onExcess)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

TEST_F(ListingStoreFaultsTest, whatDoesNotFitIsForgottenAndTheRestStays)
{
    ASSERT_TRUE(open());
    save("/kept", {file("a")});
    {
        FileSizeLimit const limit(300'000);
        loop.run(store->save(host, muchToSave()));
        EXPECT_TRUE(has("/kept"));
        EXPECT_FALSE(has("/srv/49"));
    }
    EXPECT_EQ(statistics().rows, 1);
    loop.run(store->save(host, muchToSave()));
    EXPECT_TRUE(has("/srv/49"));
    close();
    ASSERT_TRUE(open());
    EXPECT_EQ(statistics().rows, 51);
}

TEST_F(ListingStoreFaultsTest, aStoreThatFindsNoRoomToBeginIsBegunAnotherTime)
{
    {
        FileSizeLimit const limit(100);
        EXPECT_FALSE(open());
    }
    EXPECT_TRUE(worksAcrossRestart());
}

} // namespace
} // namespace tw::test
