#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/support/Listings.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace tw::test {
namespace {

using ::testing::ElementsAre;

/// A provider on real threads whose every listing tells how often it was asked, so that each is a change.
class CountingProvider final : public FileSystemProvider {
public:
    explicit CountingProvider(WorkerPool const &workers) : pool(workers) {}

    std::string identifier() const override { return "counting"; }

    std::string displayName() const override { return "Counting"; }

    int maxUsefulDepth() const override { return 3; }

    Task<Listings> fetch(std::string path, int depth, FetchPriority /*priority*/) override
    {
        auto const number = ++fetches;
        return pool.run(number % 2 == 0 ? WorkPriority::interactive : WorkPriority::background, [=] {
            if (number % 7 == 0)
                throw std::runtime_error("now and then it fails");
            Listings result;
            auto const name = std::to_string(number);
            result.emplace(path, listing(path, {file(name)}, std::chrono::system_clock::now()));
            for (int level = 1; level < depth; ++level) {
                auto const child = path + "/" + std::to_string(level);
                result.emplace(child, listing(child, {file(name)}, std::chrono::system_clock::now()));
            }
            return result;
        });
    }

    std::atomic<int> fetches = 0;

private:
    WorkerPool const &pool;
};

class BrowserThreadsTest : public ::testing::Test {
protected:
    std::shared_ptr<Browser> makeBrowser(std::shared_ptr<FileSystemProvider> provider, Browser::Config config = {},
                                         std::shared_ptr<ListingBudget> memory = {})
    {
        return std::make_shared<Browser>(std::move(provider),
                                         Browser::Collaborators{.strand = runtime.makeStrand(),
                                                                .clock = runtime.clock(),
                                                                .memory = std::move(memory)},
                                         config);
    }

    EngineRuntime runtime;
    TestLoop loop;
};

Task<int> countUpdates(std::shared_ptr<Browser> browser)
{
    auto stream = co_await browser->updates();
    browser.reset();
    int count = 0;
    for (;;) {
        auto const update = co_await stream.next();
        if (!update)
            co_return count;
        ++count;
    }
}

TEST_F(BrowserThreadsTest, callsFromManyTasksAtOnceAreServedAndEndWithTheShutdown)
{
    // Everything is stale at once and the budget is small, so that every path of the code is taken.
    auto const provider = std::make_shared<CountingProvider>(runtime.workers());
    auto const memory = std::make_shared<ListingBudget>(runtime.makeStrand(), 20);
    auto const browser = makeBrowser(provider, {.ttl = std::chrono::duration<double>(0.0)}, memory);
    auto const updates = loop.start(countUpdates(browser));
    std::mt19937 random(7);
    std::vector<Started<OpenResult>> opens;
    for (int round = 0; round < 400; ++round) {
        auto const path = "/" + std::to_string(random() % 5);
        switch (random() % 6) {
        case 0:
            loop.start(browser->refresh(path));
            break;
        case 1:
            loop.start(browser->invalidate(path));
            break;
        case 2:
            loop.start(browser->prefetch(path + "/1"));
            break;
        case 3:
            loop.start(countUpdates(browser)).stop();
            break;
        case 4:
            opens.push_back(loop.start(browser->reread(path)));
            break;
        default:
            opens.push_back(loop.start(browser->open(path)));
        }
        if (round % 10 == 0)
            opens.back().stop();
    }
    loop.runUntil([&] { return std::ranges::all_of(opens, [](auto const &open) { return open.isDone(); }); });
    auto const served = std::ranges::count_if(opens, [](auto const &open) { return !open.failed(); });
    EXPECT_GT(served, 0);
    auto const stats = loop.run(browser->stats());
    EXPECT_GT(stats.opens, 0);
    loop.run(browser->shutdown());
    EXPECT_GE(loop.run(browser->stats()).opens, stats.opens);
    loop.runUntil([&] { return updates.isDone(); });
    EXPECT_GE(updates.value(), 0);
}

TEST_F(BrowserThreadsTest, aBrowserMayGoWhileItsScansRun)
{
    auto const provider = std::make_shared<CountingProvider>(runtime.workers());
    for (int round = 0; round < 100; ++round) {
        auto browser = makeBrowser(provider);
        auto const prefetch = loop.start(browser->prefetch("/a"));
        auto const open = loop.start(browser->open("/b"));
        std::weak_ptr<Browser> const gone = browser;
        browser.reset();
        loop.runUntil([&] { return prefetch.isDone() && open.isDone(); });
        // The last holder may be a frame that is just being freed on another thread.
        loop.runUntil([&] {
            loop.context()->post([] {});
            return gone.expired();
        });
    }
    EXPECT_GT(provider->fetches.load(), 100);
}

TEST_F(BrowserThreadsTest, aLocalFolderOpensColdThenWarmThenChanged)
{
    TemporaryFolder const folder;
    folder.file("a");
    auto const browser = makeBrowser(std::make_shared<LocalProvider>(runtime));
    auto const cold = loop.run(browser->open(folder.path()));
    EXPECT_TRUE(cold.wasCold);
    EXPECT_THAT(names(cold.snapshot), ElementsAre("a"));
    auto const warm = loop.run(browser->open(folder.path()));
    EXPECT_FALSE(warm.wasCold);
    EXPECT_EQ(warm.snapshot.storage(), cold.snapshot.storage()) << "a warm open shares the names";

    auto const updates = loop.start(countUpdates(browser));
    loop.run(browser->stats()); // on the strand after the subscription
    folder.file("b");
    loop.run(browser->refresh(folder.path()));
    loop.runUntil([&] {
        auto const held = loop.run(browser->cached(folder.path()));
        return held && held->count() == 2;
    });
    loop.run(browser->shutdown());
    loop.runUntil([&] { return updates.isDone(); });
    EXPECT_EQ(updates.value(), 1);
}

TEST_F(BrowserThreadsTest, aVanishedFolderFailsAfterAnInvalidationAndStaysStaleBefore)
{
    TemporaryFolder const folder;
    auto const path = folder.folder("sub");
    auto const browser =
        makeBrowser(std::make_shared<LocalProvider>(runtime), {.ttl = std::chrono::duration<double>(0.0)});
    loop.run(browser->open(path));
    std::filesystem::remove(path);
    EXPECT_TRUE(loop.run(browser->open(path)).isStale);
    loop.run(browser->invalidate(path));
    EXPECT_ANY_THROW(loop.run(browser->open(path)));
    loop.run(browser->shutdown());
}

} // namespace
} // namespace tw::test
