// What a local folder costs: the reading of a large one against the bare system calls, and the opening of one that is
// in memory.

#include "TWCore/Async/Outcome.h"
#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "bench/BenchLoop.h"
#include "bench/Figure.h"
#include "bench/ManyFiles.h"
#include "tests/hosts/TestMount.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <cstdlib>
#include <new>
#include <stdexcept>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

std::atomic<std::size_t> allocatedBytes = 0;

} // namespace

// Counts what is asked for, all threads together.
void *operator new(std::size_t size)
{
    allocatedBytes += size;
    if (auto *const memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

namespace tw::bench {
namespace {

constexpr int manyEntries = 100'000;
constexpr int mostEntries = 1'000'000;
/// On a file system that takes a millisecond to tell the attributes of one.
constexpr int slowEntries = 10'000;
constexpr int fewEntries = 1'000;

/// The least that anybody can do to list a folder with sizes and times.
std::size_t bareLoop(std::string const &path)
{
    auto *const directory = opendir(path.c_str());
    if (!directory)
        throw std::runtime_error("the folder of the benchmark cannot be opened");
    std::size_t count = 0;
    while (auto const *const record = readdir(directory)) {
        struct stat status;
        if (fstatat(dirfd(directory), record->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0)
            ++count;
    }
    closedir(directory);
    return count;
}

struct OpenCost {
    double medianMicroseconds = 0;
    double bytesPerOpen = 0;
};

/// Opens a folder again and again that is in memory, and measures from the asking to the answer on the asker's side.
Task<OpenCost> measureWarmOpens(std::shared_ptr<Browser> browser, std::string path, int rounds)
{
    co_await browser->open(path);
    std::vector<double> microseconds;
    microseconds.reserve(static_cast<std::size_t>(rounds));
    auto const before = allocatedBytes.load();
    for (int round = 0; round < rounds; ++round) {
        auto const started = std::chrono::steady_clock::now();
        auto const result = co_await browser->open(path);
        microseconds.push_back(
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - started).count());
        if (result.wasCold)
            throw std::runtime_error("a warm folder was fetched");
    }
    auto const bytes = static_cast<double>(allocatedBytes.load() - before);
    co_return OpenCost{median(std::move(microseconds)), bytes / rounds};
}

/// How reading a whole folder compares with one thread's bare loop, at most.
void reportListing(Figures &figures, BenchLoop &loop, FileSystemProvider &provider, std::string const &name,
                   std::string const &path, std::size_t count, int runs, double largestRatio)
{
    auto const fetch = [&] {
        return millisecondsOf([&] {
            auto const listings = loop.run(provider.fetch(path, 1, FetchPriority::interactive));
            if (listings.at(path).count() != count)
                throw std::runtime_error("the listing is not whole");
        });
    };
    auto const bare = [&] {
        return millisecondsOf([&] {
            if (bareLoop(path) != count + 2) // with "." and ".."
                throw std::runtime_error("the bare loop did not see all");
        });
    };
    auto const listing = takeTurns(runs, fetch, bare);
    figures.report(name, listing.subject, Figures::Yardstick::peer, listing.peer, "ms", largestRatio);
}

Task<void> lookAt(std::shared_ptr<LocalProvider> provider, std::string path)
{
    co_await outcomeOf(provider->fetch(std::move(path), 1, FetchPriority::interactive));
}

/// A folder elsewhere, while several look at each of four mounts that never answer.
void reportBesideDeadMounts(Figures &figures, BenchLoop &loop, std::string const &path)
{
    test::TemporaryFolder const folder;
    EngineRuntime quiet;
    LocalProvider undisturbed(quiet);
    EngineRuntime runtime;
    auto const provider = std::make_shared<LocalProvider>(runtime);
    std::vector<test::TestMount> mounts; // gone before the engine, which waits for those who look
    for (auto const *name : {"a", "b", "c", "d"}) {
        mounts.push_back(test::TestMount::silent(folder.folder(name)));
        for (int looks = 0; looks < 3; ++looks)
            spawn({runtime.makeStrand().executor(), {}}, lookAt(provider, mounts.back().path()));
    }
    auto const fetch = [&](LocalProvider &from) {
        return millisecondsOf([&] { keep(loop.run(from.fetch(path, 1, FetchPriority::interactive))); });
    };
    auto const listing = takeTurns(99, [&] { return fetch(*provider); }, [&] { return fetch(undisturbed); });
    figures.report("local listing of 1,000 files beside four dead mounts against one without", listing.subject,
                   Figures::Yardstick::peer, listing.peer, "ms", 1.25);
}

int run()
{
    ManyFiles const many(manyEntries);
    ManyFiles const few(fewEntries);
    EngineRuntime runtime;
    BenchLoop loop;
    auto const provider = std::make_shared<LocalProvider>(runtime);
    Figures figures;

    reportListing(figures, loop, *provider, "local listing of 100,000 files against readdir and fstatat", many.path(),
                  manyEntries, 9, 0.70);
    reportListing(figures, loop, *provider, "local listing of 1,000 files against readdir and fstatat", few.path(),
                  fewEntries, 99, 1.25);
    reportBesideDeadMounts(figures, loop, few.path());
    {
        ManyFiles const most(mostEntries);
        reportListing(figures, loop, *provider, "local listing of 1,000,000 files against readdir and fstatat",
                      most.path(), mostEntries, 5, 0.70);
    }
    {
        test::TemporaryFolder const folder;
        auto const slow = test::TestMount::slow(folder.folder("mount"), slowEntries, std::chrono::milliseconds(1));
        reportListing(figures, loop, *provider,
                      "listing of 10,000 files at 1 ms each against readdir and fstatat of one thread", slow.path(),
                      slowEntries, 1, 1.0 / 6);
    }

    auto const browser = std::make_shared<Browser>(
        provider, Browser::Collaborators{.strand = runtime.makeStrand(), .clock = runtime.clock(), .store = nullptr},
        Browser::Config{.ttl = std::chrono::hours(1)});
    auto const ofMany = loop.run(measureWarmOpens(browser, many.path(), 2000));
    auto const ofFew = loop.run(measureWarmOpens(browser, few.path(), 2000));
    figures.report("warm open of a 100,000-entry folder, median", ofMany.medianMicroseconds, Figures::Yardstick::limit,
                   50.0, "us", 1.0);
    figures.report("bytes allocated by a warm open, 100,000 entries against 1,000", ofMany.bytesPerOpen,
                   Figures::Yardstick::peer, ofFew.bytesPerOpen, "bytes", 1.05);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::run();
}
