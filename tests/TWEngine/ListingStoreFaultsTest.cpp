#include "TWEngine/Runtime/ChildProcess.h"
#include "tests/support/ListingStoreTest.h"

#include <csignal>
#include <filesystem>
#include <sqlite3.h>

#include <sys/resource.h>

namespace tw::test {
namespace {

using namespace std::chrono_literals;

/// Another process that is in the middle of writing into the store, until the object goes.
class Writer {
public:
    Writer(EngineRuntime &runtime, TestLoop &testLoop, std::string const &database) : loop(testLoop)
    {
        auto started = ChildProcess::start(
            runtime.io(),
            {.program = TARNWICK_WRITE_LOCK_HOLDER, .arguments = {database}, .input = PipeEnd{}, .output = PipeEnd{}});
        if (!started)
            throw std::runtime_error("the other process does not start");
        child = *started;
        if (loop.run(child->read(ChildOutput::standard)) != "locked\n")
            throw std::runtime_error("the other process does not get the lock");
    }

    ~Writer()
    {
        child->closeInput();
        loop.run(child->wait());
    }

    /// Ends it in the middle of what it does.
    void kill() { child->kill(); }

    Writer(Writer const &) = delete;
    Writer &operator=(Writer const &) = delete;

private:
    TestLoop &loop;
    std::shared_ptr<ChildProcess> child;
};

/// While another process writes.
class ListingStoreLockTest : public ListingStoreTest {
protected:
    std::unique_ptr<Writer> write() { return std::make_unique<Writer>(runtime, loop, databasePath()); }
};

TEST_F(ListingStoreLockTest, aRowThatCannotBeKeptDoesNotKeepTheOthersFromIt)
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

TEST_F(ListingStoreLockTest, aListingIsLoadedWhileAnotherProcessWrites)
{
    ASSERT_TRUE(open());
    save("/srv", {file("a")});
    auto const writer = write();
    EXPECT_TRUE(has("/srv"));
    EXPECT_EQ(statistics().rows, 1);
}

TEST_F(ListingStoreLockTest, aStoreIsOpenedWhileAnotherProcessWrites)
{
    ASSERT_TRUE(open());
    save("/srv", {file("a")});
    close();
    auto const writer = write();
    ASSERT_TRUE(open());
    EXPECT_TRUE(has("/srv"));
}

TEST_F(ListingStoreLockTest, whatCannotBeWrittenForAnotherIsForgottenAndNotWaitedForWithEachRow)
{
    ASSERT_TRUE(open());
    save("/srv", {file("a")});
    {
        auto const writer = write();
        Listings scan;
        // With a wait for each of them it would take longer than a test may.
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

TEST_F(ListingStoreLockTest, aStoreThatAnotherProcessIsMakingIsNotTakenForADamagedOne)
{
    std::filesystem::create_directories(cacheFolder);
    ASSERT_EQ(runSql("CREATE TABLE listings (id INTEGER PRIMARY KEY, provider TEXT NOT NULL, path TEXT NOT NULL,"
                     " fetched INTEGER NOT NULL, bytes INTEGER NOT NULL, blob BLOB NOT NULL);"
                     "INSERT INTO listings VALUES (1, 'p', '/kept', 1, 1, x'00')"),
              SqliteResult::done);
    {
        auto const writer = write();
        EXPECT_FALSE(open());
    }
    ASSERT_TRUE(open());
    EXPECT_EQ(statistics().rows, 1);
}

TEST_F(ListingStoreLockTest, whatAProcessThatDiedHadBegunToWriteIsNotThere)
{
    ASSERT_TRUE(open());
    save("/srv", {file("a")});
    write()->kill();
    EXPECT_TRUE(has("/srv"));
    save("/later", {file("b")});
    close();
    ASSERT_TRUE(open());
    EXPECT_EQ(statistics().rows, 2);
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

class ListingStoreFullDiskTest : public ListingStoreTest {
protected:
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

TEST_F(ListingStoreFullDiskTest, whatDoesNotFitIsForgottenAndTheRestStays)
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

TEST_F(ListingStoreFullDiskTest, aStoreThatFindsNoRoomToBeginIsBegunAnotherTime)
{
    {
        FileSizeLimit const limit(100);
        EXPECT_FALSE(open());
    }
    EXPECT_TRUE(worksAcrossRestart());
}

TEST_F(ListingStoreFullDiskTest, aStoreIsReadWhereNothingCanBeWritten)
{
    ASSERT_TRUE(open());
    save("/kept", {file("a")});
    FileSizeLimit const limit(0);
    EXPECT_TRUE(has("/kept"));
    save("/more", {});
    loop.run(store->remove(host, "/kept"));
    loop.run(store->trim());
    EXPECT_TRUE(has("/kept"));
    EXPECT_EQ(statistics().rows, 1);
}

/// On a file system without shared memory between processes, as SQLite has it for such.
class ListingStoreWithoutWalTest : public ListingStoreTest {
protected:
    ListingStoreWithoutWalTest() { sqlite3_vfs_register(sqlite3_vfs_find("unix-dotfile"), 1); }

    ~ListingStoreWithoutWalTest() override
    {
        if (store)
            close();
        sqlite3_vfs_register(usual, 1);
    }

    sqlite3_vfs *const usual = sqlite3_vfs_find(nullptr);
};

TEST_F(ListingStoreWithoutWalTest, aStoreWorksAtThePaceOfItsJournal)
{
    ASSERT_TRUE(open());
    save("/srv", {file("a")});
    EXPECT_FALSE(std::filesystem::exists(databasePath() + "-wal"));
    EXPECT_TRUE(has("/srv"));
    loop.run(store->remove(host, "/srv"));
    EXPECT_FALSE(has("/srv"));
    close();
    EXPECT_TRUE(worksAcrossRestart());
}

} // namespace
} // namespace tw::test
