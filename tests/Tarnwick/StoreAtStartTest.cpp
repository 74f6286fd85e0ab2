#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Store/ListingStore.h"
#include "TWEngine/Store/SqliteDatabase.h"
#include "Tarnwick/Connections/ConnectionRegistry.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::chrono_literals;

/// What the start of the program does with the listings of earlier times.
class StoreAtStartTest : public testing::Test {
protected:
    StoreAtStartTest() { loop.run(ListingStore::create(engine.workers(), engine.clock(), folder.path(), {})->close()); }

    ~StoreAtStartTest() override { loop.run(registry->shutdownAll()); }

    /// A row that claims to have that size.
    void addRow(std::string const &path, std::int64_t bytes, std::chrono::seconds age)
    {
        auto const now = std::chrono::floor<std::chrono::seconds>(engine.clock()->now()).time_since_epoch();
        auto database = SqliteDatabase::open(folder.path("listings.sqlite"));
        ASSERT_TRUE(database);
        auto statement = database->prepare(
            "INSERT INTO listings (provider, path, fetched, bytes, blob) VALUES ('p', ?, ?, ?, x'00')");
        statement->bind(1, path);
        statement->bind(2, (now - age).count());
        statement->bind(3, bytes);
        ASSERT_EQ(statement->step(), SqliteResult::done);
    }

    std::string paths()
    {
        auto database = SqliteDatabase::open(folder.path("listings.sqlite"));
        auto statement = database->prepare(
            "SELECT CAST(GROUP_CONCAT(path, ' ') AS BLOB) FROM (SELECT path FROM listings ORDER BY fetched)");
        return statement->step() == SqliteResult::row ? std::string(statement->blob(0)) : "";
    }

    void start()
    {
        registry = std::make_unique<ConnectionRegistry>(ConnectionRegistry::Collaborators{
            .engine = engine, .mainContext = loop.context(), .cacheDirectory = folder.path()});
    }

    /// Waits for a trim that runs behind everything else. False after a limit that only a hang reaches.
    bool becomes(std::string const &expected)
    {
        for (auto left = 30'000; left > 0 && paths() != expected; --left)
            loop.run(engine.clock()->sleep(1ms));
        return paths() == expected;
    }

    TemporaryFolder folder;
    EngineRuntime engine;
    TestLoop loop;
    std::unique_ptr<ConnectionRegistry> registry;
};

TEST_F(StoreAtStartTest, rowsOlderThanSevenDaysAreDeleted)
{
    addRow("/old", 1, 7 * 24h + 1min);
    addRow("/young", 1, 7 * 24h - 1h);
    start();
    EXPECT_TRUE(becomes("/young")) << paths();
}

TEST_F(StoreAtStartTest, theOldestRowsBeyondTwoHundredMebibytesAreDeleted)
{
    constexpr std::int64_t half = 104'857'600;
    addRow("/oldest", half, 30s);
    addRow("/older", half, 20s);
    addRow("/newest", half, 10s);
    start();
    EXPECT_TRUE(becomes("/older /newest")) << paths();
}

} // namespace
} // namespace tw::test
