// What a person waits for who has held a key down: a real sshd at the end of a long line, and a Browser that was asked
// for more than the line can carry.

#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/SSHProvider.h"
#include "bench/BenchLoop.h"
#include "bench/Figure.h"
#include "tests/hosts/DelayProxy.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/TestHost.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <unistd.h>

namespace tw::bench {
namespace {

using Milliseconds = std::chrono::milliseconds;

constexpr Milliseconds roundTrip{150};
/// A held key, as desktops repeat it.
constexpr Milliseconds repeat{33};
constexpr int repeats = 300;
constexpr int runs = 3;
constexpr int folders = 2000;
/// So that the scan ahead of the parent, which is cut at some megabytes, does not bring all of them.
constexpr int filesInEach = 40;

/// Beside one round trip and the host's own `find`.
constexpr double openingOverhead = 10;
/// Beside two round trips: the fetch that ran at the release, and the one behind it.
constexpr double refreshOverhead = 20;
/// What is read for the person, and one scan behind it.
constexpr double listingsUnderWay = 2;

/// Counts how many listings of the provider behind it are under way.
class WatchedProvider final : public FileSystemProvider {
public:
    explicit WatchedProvider(std::shared_ptr<FileSystemProvider> provider) : watched(std::move(provider)) {}

    std::string identifier() const override { return watched->identifier(); }

    std::string displayName() const override { return watched->displayName(); }

    int maxUsefulDepth() const override { return watched->maxUsefulDepth(); }

    Task<void> connect() override { return watched->connect(); }

    Task<Listings> fetch(std::string path, int depth, FetchPriority priority) override
    {
        return counted(this, watched->fetch(std::move(path), depth, priority));
    }

    Task<void> disconnect() override { return watched->disconnect(); }

    int most() const { return largest; }

    int total() const { return begun; }

private:
    static Task<Listings> counted(WatchedProvider *self, Task<Listings> fetch)
    {
        ++self->begun;
        auto const now = ++self->underWay;
        for (auto before = self->largest.load(); before < now && !self->largest.compare_exchange_weak(before, now);) {
        }
        auto outcome = co_await outcomeOf(std::move(fetch));
        --self->underWay;
        co_return outcome.take();
    }

    std::shared_ptr<FileSystemProvider> const watched;
    std::atomic<int> underWay = 0;
    std::atomic<int> largest = 0;
    std::atomic<int> begun = 0;
};

/// The host, the line to it, and a Browser that has its large folder on show.
class FarFolders {
public:
    FarFolders()
    {
        for (int index = 0; index < folders; ++index) {
            std::filesystem::create_directories(folder(index));
            for (int file = 0; file < filesInEach; ++file)
                std::ofstream(folder(index) + "/a file of a usual length " + std::to_string(file) + ".txt");
        }
        client.add("far", host.address().through(line.port()));
        reconnect();
    }

    ~FarFolders() { loop.run(browser->shutdown()); }

    FarFolders(FarFolders const &) = delete;
    FarFolders &operator=(FarFolders const &) = delete;

    std::string top() const { return tree.path("top"); }

    std::string folder(int index) const { return top() + "/folder " + std::to_string(index); }

    /// Nothing is in memory afterwards but what is on show, and what was scanned along with it.
    void reconnect()
    {
        if (browser)
            loop.run(browser->shutdown());
        provider = std::make_shared<WatchedProvider>(std::make_shared<SSHProvider>(
            SSHProvider::Collaborators{.engine = engine,
                                       .sshProgram = client.program(),
                                       .sockets = {.base = sockets.path(), .user = ::getuid()}},
            "far"));
        browser = std::make_shared<Browser>(
            provider, Browser::Collaborators{.strand = engine.makeStrand(), .clock = engine.clock()},
            Browser::Config{});
        loop.run(browser->connect());
        if (loop.run(browser->open(top())).snapshot.count() != folders)
            throw std::runtime_error("the listing is not whole");
    }

    BenchLoop loop;
    EngineRuntime engine;
    std::shared_ptr<WatchedProvider> provider;
    std::shared_ptr<Browser> browser;

private:
    test::TestHost host{engine};
    test::DelayProxy line{host.address().port, roundTrip};
    test::SSHClient client;
    test::TemporaryFolder tree;
    test::TemporaryFolder sockets;
};

double millisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

/// Moves the cursor over the rows, and opens the folder that it has come to.
Task<double> holdDownThenReturn(std::shared_ptr<Browser> browser, std::shared_ptr<Clock> clock,
                                std::vector<std::string> rows)
{
    for (auto const &row : rows) {
        co_await browser->prefetch(row);
        co_await clock->sleep(repeat);
    }
    auto const pressed = std::chrono::steady_clock::now();
    auto const opened = co_await browser->open(rows.back());
    auto const time = millisecondsSince(pressed);
    if (opened.snapshot.count() != filesInEach)
        throw std::runtime_error("the listing is not whole");
    std::printf("  %s after %.1f ms\n", opened.wasCold ? "fetched" : "from memory", time);
    co_return time;
}

/// Opens a folder when the answer to a scan of some megabytes has begun to come over the same connection.
Task<double> openBesideScan(std::shared_ptr<Browser> browser, std::shared_ptr<Clock> clock, std::string top,
                            std::string folder)
{
    co_await browser->refresh(top);
    co_await clock->sleep(roundTrip / 2 + repeat);
    auto const pressed = std::chrono::steady_clock::now();
    auto const opened = co_await browser->open(folder);
    auto const time = millisecondsSince(pressed);
    if (!opened.wasCold || opened.snapshot.count() != filesInEach)
        throw std::runtime_error("the folder was known, or the listing is not whole");
    co_return time;
}

Task<void> refreshOnce(std::shared_ptr<Browser> browser, std::string path)
{
    co_await browser->reread(path);
}

/// Reads the folder again with every repeat of the key, and waits for the last of them.
Task<double> holdRefresh(std::shared_ptr<Browser> browser, std::shared_ptr<Clock> clock, std::string path)
{
    auto const context = co_await currentContext();
    for (int press = 1; press < repeats; ++press) {
        spawn(context, refreshOnce(browser, path));
        co_await clock->sleep(repeat);
    }
    auto const released = std::chrono::steady_clock::now();
    co_await browser->reread(path);
    co_return millisecondsSince(released);
}

double findTime(std::string const &path)
{
    auto const command =
        "find -H '" + path + "' -maxdepth 1 -mindepth 1 -printf '%y\\t%s\\t%T@\\t%m\\t%P\\0' >/dev/null";
    std::vector<double> times;
    for (int run = 0; run < 5; ++run) {
        times.push_back(millisecondsOf([&] {
            if (std::system(command.c_str()) != 0)
                throw std::runtime_error("failed: " + command);
        }));
    }
    return median(std::move(times));
}

/// The first `repeats` folders of which nothing is in memory: a folder that was scanned with the parent opens at once.
std::vector<std::string> unknownRows(FarFolders &far)
{
    std::vector<std::string> rows;
    for (int index = 0; index < folders && std::ssize(rows) < repeats; ++index) {
        if (!far.loop.run(far.browser->cached(far.folder(index))))
            rows.push_back(far.folder(index));
    }
    return rows;
}

int measureAll()
{
    FarFolders far;
    Figures figures;
    using enum Figures::Yardstick;
    auto const distance = static_cast<double>(roundTrip.count());

    auto const clock = far.engine.clock();
    std::vector<double> opening;
    std::vector<double> besideScan;
    for (int run = 0; run < runs; ++run) {
        far.reconnect();
        opening.push_back(far.loop.run(holdDownThenReturn(far.browser, clock, unknownRows(far))));
        auto const unknown = unknownRows(far).back();
        besideScan.push_back(far.loop.run(openBesideScan(far.browser, clock, far.top(), unknown)));
    }
    auto const openingLimit = distance + findTime(far.folder(0)) + openingOverhead;
    figures.report("150 ms away, Return after Down was held for ten seconds", median(opening), limit, openingLimit,
                   "ms", 1.0);
    figures.report("150 ms away, Return while a scan of megabytes is coming", median(besideScan), limit, openingLimit,
                   "ms", 1.0);

    far.reconnect();
    std::vector<double> fresh;
    for (int run = 0; run < runs; ++run)
        fresh.push_back(far.loop.run(holdRefresh(far.browser, clock, far.top())));
    figures.report("150 ms away, a fresh listing after Ctrl+R was held for ten seconds", median(fresh), limit,
                   2 * distance + refreshOverhead, "ms", 1.0);
    figures.report("listings under way at any time meanwhile", far.provider->most(), limit, listingsUnderWay,
                   "listings", 1.0);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::measureAll();
}
