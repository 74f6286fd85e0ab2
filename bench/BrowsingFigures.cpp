// What a local folder costs: the reading of a large one against the bare system calls, and the opening of one that is
// in memory.

#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "bench/BenchLoop.h"
#include "bench/Figure.h"
#include "bench/ManyFiles.h"

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

int run()
{
    ManyFiles const many(manyEntries);
    ManyFiles const few(fewEntries);
    EngineRuntime runtime;
    BenchLoop loop;
    auto const provider = std::make_shared<LocalProvider>(runtime.workers());
    Figures figures;

    auto const fetch = [&] {
        return millisecondsOf([&] {
            auto const listings = loop.run(provider->fetch(many.path(), 1, FetchPriority::interactive));
            if (listings.at(many.path()).count() != manyEntries)
                throw std::runtime_error("the listing is not whole");
        });
    };
    auto const listing = takeTurns(9, fetch, [&] { return millisecondsOf([&] { keep(bareLoop(many.path())); }); });
    figures.report("local listing of 100,000 files against readdir and fstatat", listing.subject,
                   Figures::Yardstick::peer, listing.peer, "ms", 1.25);

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
