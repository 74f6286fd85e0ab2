#pragma once

#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Store/ListingStore.h"
#include "TWEngine/Store/SqliteDatabase.h"
#include "tests/support/Listings.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

namespace tw::test {

/// A store in a real file, on real threads, with a clock that stands still.
class ListingStoreTest : public ::testing::Test {
protected:
    static constexpr char const *host = "ssh-cache:host";

    ~ListingStoreTest() override
    {
        if (store)
            close();
    }

    std::shared_ptr<ListingStore> create()
    {
        return ListingStore::create(runtime.workers(), clock, cacheFolder, limits);
    }

    /// False if the store cannot be opened.
    bool open()
    {
        store = create();
        return store != nullptr;
    }

    void close() { loop.run(std::exchange(store, nullptr)->close()); }

    void save(std::string const &path, std::vector<ListedEntry> const &rows) { saveAs(host, path, rows); }

    void saveAs(std::string const &provider, std::string const &path, std::vector<ListedEntry> const &rows)
    {
        loop.run(store->save(provider, {{path, listing(path, rows, clock->now())}}));
    }

    std::optional<DirectorySnapshot> load(std::string const &path, std::string const &provider = host)
    {
        return loop.run(store->load(provider, path));
    }

    bool has(std::string const &path, std::string const &provider = host) { return load(path, provider).has_value(); }

    ListingStore::Statistics statistics() { return loop.run(store->statistics()); }

    /// True if a store in that folder works: it remembers a listing across a restart.
    bool worksAcrossRestart()
    {
        if (!open())
            return false;
        save("/after", {file("a")});
        close();
        if (!open())
            return false;
        auto const found = has("/after");
        close();
        return found;
    }

    std::string databasePath() const { return cacheFolder + "/listings.sqlite"; }

    /// Runs on a connection of its own, beside the store.
    SqliteResult runSql(std::string const &statements)
    {
        auto database = SqliteDatabase::open(databasePath());
        return database ? database->run(statements.c_str()) : SqliteResult::failed;
    }

    /// The number that a query returns.
    std::int64_t numberOf(std::string const &query)
    {
        auto database = SqliteDatabase::open(databasePath());
        auto statement = database ? database->prepare(query) : std::nullopt;
        if (!statement || statement->step() != SqliteResult::row)
            throw std::runtime_error("no answer to: " + query);
        return statement->integer(0);
    }

    TemporaryFolder folder;
    std::string cacheFolder = folder.path("caches/tarnwick");
    EngineRuntime runtime;
    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    ListingStore::Limits limits;
    std::shared_ptr<ListingStore> store;
};

} // namespace tw::test
