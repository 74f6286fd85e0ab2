// What it costs to keep listings across restarts: the blob of one, and the store with two hundred megabytes of them.

#include "TWCore/Model/ListingParser.h"
#include "TWCore/Model/SnapshotCodec.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/SharedTask.h"
#include "TWEngine/Store/ListingStore.h"
#include "bench/BenchLoop.h"
#include "bench/Figure.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <random>
#include <stdexcept>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<int> syncs = 0;

} // namespace

// Stand before those of the C library, for SQLite too: they count, and do it.
extern "C" [[gnu::visibility("default")]] int fsync(int descriptor)
{
    ++syncs;
    return static_cast<int>(syscall(SYS_fsync, descriptor));
}

extern "C" [[gnu::visibility("default")]] int fdatasync(int descriptor)
{
    ++syncs;
    return static_cast<int>(syscall(SYS_fdatasync, descriptor));
}

namespace tw::bench {
namespace {

constexpr std::size_t manyEntries = 100'000;
constexpr int runs = 25;

Timestamp const startOfAll = std::chrono::system_clock::now() - std::chrono::hours(1);

/// A copy of one block goes 32 bytes at a step. Where names are gathered from a response, each costs two nanoseconds of
/// its own: some ten steps of that, for an entry of 44 bytes.
constexpr double largestEncodeRatio = 4.0;

/// Each entry is widened, looked at and found to lie inside the names, and what is written is a tenth more than the
/// blob.
constexpr double largestDecodeRatio = 3.5;

/// A listing of a host's response: the names have fields of numbers between them.
DirectorySnapshot remoteListing(std::string const &path, std::size_t count, Timestamp fetchedAt = startOfAll)
{
    std::mt19937 random(static_cast<unsigned>(count));
    std::uniform_int_distribution<std::size_t> length(6, 28);
    std::uniform_int_distribution<int> letter('a', 'z');
    std::string stream;
    for (std::size_t i = 0; i < count; ++i) {
        stream += "f\t" + std::to_string(random()) + "\t1700000000.1234567890\t644\t" + std::to_string(i);
        for (auto rest = length(random) - std::to_string(i).size(); rest > 0 && rest < 28; --rest)
            stream += static_cast<char>(letter(random));
        stream += '\0';
    }
    auto const response = std::make_shared<std::string const>(std::move(stream));
    return ListingParser::parse(response, path, 1, fetchedAt, ListingParser::Completeness::whole).at(path);
}

void measureCodec(Figures &figures)
{
    auto const snapshot = remoteListing("/srv", manyEntries);
    auto const blob = SnapshotCodec::encode(snapshot);
    auto const copy = [&] { return millisecondsOf([&] { keep(std::string(blob)); }); };
    auto const encoding =
        takeTurns(runs, [&] { return millisecondsOf([&] { keep(SnapshotCodec::encode(snapshot)); }); }, copy);
    figures.report("blob of a listing of 100,000 entries, each name packed by itself, against one copy of the blob",
                   encoding.subject, Figures::Yardstick::peer, encoding.peer, "ms", largestEncodeRatio);
    auto const decoding =
        takeTurns(runs, [&] { return millisecondsOf([&] { keep(SnapshotCodec::decode(blob, "/srv")); }); }, copy);
    figures.report("listing of a blob of 100,000 entries, each entry checked, against one copy of the blob",
                   decoding.subject, Figures::Yardstick::peer, decoding.peer, "ms", largestDecodeRatio);
}

/// A store that is thrown away, in a folder of its own.
class StoreUnderTest {
public:
    explicit StoreUnderTest(ListingStore::Limits limits) : bounds(limits) { open(); }

    ~StoreUnderTest() { loop.run(store->close()); }

    StoreUnderTest(StoreUnderTest const &) = delete;
    StoreUnderTest &operator=(StoreUnderTest const &) = delete;

    /// How long it takes to open what is there, in milliseconds.
    double reopen()
    {
        loop.run(store->close());
        return millisecondsOf([this] { open(); });
    }

    void save(Listings listings) { loop.run(store->save("host", std::move(listings))); }

    std::optional<DirectorySnapshot> load(std::string const &path) { return loop.run(store->load("host", path)); }

    std::int64_t bytes() { return loop.run(store->statistics()).bytes; }

    struct TrimCost {
        double milliseconds = 0;
        double ofLoad = 0; ///< of a listing that was asked for when the trimming had begun
    };

    TrimCost trimAndLoad(std::string const &path) { return loop.run(measureTrim(store, path)); }

private:
    void open()
    {
        store = ListingStore::create(runtime.workers(), runtime.clock(), folder.path(), bounds);
        if (!store)
            throw std::runtime_error("the store of the benchmark cannot be opened");
    }

    static double since(std::chrono::steady_clock::time_point start)
    {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    }

    static Task<TrimCost> measureTrim(std::shared_ptr<ListingStore> store, std::string path)
    {
        auto const context = co_await currentContext();
        auto const started = std::chrono::steady_clock::now();
        auto const trimming = SharedTask<void>::start(context.executor, store->trim());
        co_await store->statistics(); // answered behind the first turn of the trimming, or as the trimming begins
        auto const asked = std::chrono::steady_clock::now();
        auto const loaded = co_await store->load("host", path);
        if (!loaded)
            throw std::runtime_error("the listing is not in the store");
        auto const ofLoad = since(asked);
        co_await trimming.wait();
        co_return TrimCost{.milliseconds = since(started), .ofLoad = ofLoad};
    }

    test::TemporaryFolder folder;
    EngineRuntime runtime;
    BenchLoop loop;
    ListingStore::Limits bounds;
    std::shared_ptr<ListingStore> store;
};

/// A scan of a tree: `folders` listings of `entriesEach`.
Listings scanOf(std::string const &root, std::size_t folders, std::size_t entriesEach, Timestamp fetchedAt = startOfAll)
{
    auto const listing = remoteListing(root, entriesEach, fetchedAt);
    auto const entries = std::vector<Entry>(listing.entries().begin(), listing.entries().end());
    Listings scan;
    for (std::size_t i = 0; i < folders; ++i) {
        auto const path = root + "/" + std::to_string(i);
        scan.emplace(path, DirectorySnapshot(path, listing.storage(), entries, listing.fetchedAt(), false));
    }
    return scan;
}

void measureSave(Figures &figures)
{
    StoreUnderTest store({});
    std::vector<double> milliseconds;
    std::vector<double> syncsEach;
    for (int round = 0; round < runs; ++round) {
        auto scan = scanOf("/srv/" + std::to_string(round), 500, 100);
        auto const before = syncs.load();
        milliseconds.push_back(millisecondsOf([&] { store.save(std::move(scan)); }));
        syncsEach.push_back(syncs - before);
    }
    auto const most = std::ranges::max(syncsEach);
    if (most == 0)
        throw std::runtime_error("a log is never moved to the database, or nobody counts");
    figures.report("save of 500 folders with 50,000 entries, median", median(std::move(milliseconds)),
                   Figures::Yardstick::limit, 50.0, "ms", 1.0);
    figures.report("waits for the disk in a save, median", median(syncsEach), Figures::Yardstick::limit, 1.0, "syncs",
                   1.0);
    figures.report("waits for the disk in a save that finds the log full", most, Figures::Yardstick::limit, 3.0,
                   "syncs", 1.0);
}

void measureLoadAndTrim(Figures &figures)
{
    constexpr std::int64_t mebibyte = 1 << 20;
    StoreUnderTest store({.maxBytes = 20 * mebibyte});
    // Scans of two megabytes, a second apart, and the folder that is asked for.
    for (int scan = 0; store.bytes() < 200 * mebibyte; ++scan)
        store.save(scanOf("/srv/" + std::to_string(scan), 50, 1'000, startOfAll + std::chrono::seconds(scan)));
    store.save({{"/home", remoteListing("/home", 10'000, startOfAll + std::chrono::minutes(50))}});
    figures.report("start of a store of 200 MiB", store.reopen(), Figures::Yardstick::limit, 20.0, "ms", 1.0);

    // Each time as the first one after a start, when SQLite has nothing of it in memory.
    std::vector<double> milliseconds;
    for (int round = 0; round < runs; ++round) {
        store.reopen();
        milliseconds.push_back(millisecondsOf([&] {
            if (!store.load("/home"))
                throw std::runtime_error("the listing is not in the store");
        }));
    }
    figures.report("load of a folder with 10,000 entries from a store of 200 MiB, median",
                   median(std::move(milliseconds)), Figures::Yardstick::limit, 3.0, "ms", 1.0);
    auto const trimming = store.trimAndLoad("/home");
    figures.report("trimming of 200 MiB", trimming.milliseconds, Figures::Yardstick::limit, 1000.0, "ms", 1.0);
    figures.report("load of a folder with 10,000 entries while that is trimmed", trimming.ofLoad,
                   Figures::Yardstick::limit, 100.0, "ms", 1.0);
    figures.report("left by the trimming, which may be over by part of a scan",
                   static_cast<double>(store.bytes()) / mebibyte, Figures::Yardstick::limit, 20.0, "MiB", 1.11);
}

int run()
{
    Figures figures;
    measureCodec(figures);
    measureSave(figures);
    measureLoadAndTrim(figures);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::run();
}
