#include "TWEngine/Browsing/Browser.h"
#include "tests/support/DiskRows.h"
#include "tests/support/SSHProviderTest.h"

namespace tw::test {
namespace {

/// A host at the end of a long line, as a pane sees it.
class BrowserOverSSHTest : public SSHProviderTest {
protected:
    void reachFarAway()
    {
        reach({}, std::chrono::milliseconds(30));
        for (int index = 0; index < subfolders; ++index) {
            folder.folder("folder " + std::to_string(index));
            folder.file("folder " + std::to_string(index) + "/file " + std::to_string(index));
        }
        provider = makeProvider();
        browser = std::make_shared<Browser>(
            provider, Browser::Collaborators{.strand = engine.makeStrand(), .clock = engine.clock(), .store = nullptr},
            Browser::Config{.ttl = std::chrono::hours(1)});
        loop.run(browser->connect());
    }

    /// Waits until the line is at rest: what was asked ahead is there, and what is said next is ours.
    void waitForTheScanAhead()
    {
        loop.runUntil([&] {
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
            return loop.run(browser->cached(folder.path("folder 0"))).has_value();
        });
    }

    static constexpr int subfolders = 10;

    Provider provider;
    std::shared_ptr<Browser> browser;
};

TEST_F(BrowserOverSSHTest, foldersThatWereScannedAheadOpenWithoutAsking)
{
    reachFarAway();
    auto const first = loop.run(browser->open(folder.path()));
    EXPECT_TRUE(first.wasCold);
    EXPECT_EQ(first.snapshot.count(), static_cast<std::size_t>(subfolders));
    waitForTheScanAhead();

    for (int index = 0; index < subfolders; ++index) {
        auto const path = folder.path("folder " + std::to_string(index));
        auto const opened = loop.run(browser->open(path));
        EXPECT_FALSE(opened.wasCold);
        EXPECT_EQ(opened.snapshot.count(), 1U);
    }
    auto const stats = loop.run(browser->stats());
    EXPECT_EQ(stats.coldFetches, 1);
    EXPECT_EQ(stats.cacheHits, subfolders);
    loop.run(browser->shutdown());
}

TEST_F(BrowserOverSSHTest, whatWasScannedAheadOpensOverADeadLine)
{
    reachFarAway();
    loop.run(browser->open(folder.path()));
    waitForTheScanAhead();
    line->stall();
    auto const before = line->traffic();
    for (int index = 0; index < subfolders; ++index)
        EXPECT_EQ(loop.run(browser->open(folder.path("folder " + std::to_string(index)))).snapshot.count(), 1U);
    EXPECT_EQ(line->traffic().towardsClient.delivered, before.towardsClient.delivered);
    line->resume();
    loop.run(browser->shutdown());
}

TEST_F(BrowserOverSSHTest, aFolderOpensAgainAfterTheLineWasCut)
{
    reachFarAway();
    loop.run(browser->open(folder.path()));
    waitForTheScanAhead();
    line->cut();
    loop.run(browser->invalidateAll());
    folder.file("new");
    auto const opened = loop.run(browser->open(folder.path()));
    EXPECT_TRUE(opened.wasCold);
    EXPECT_EQ(opened.snapshot.count(), static_cast<std::size_t>(subfolders) + 1);
    waitForTheScanAhead();
    EXPECT_EQ(line->traffic().connections, 2U);
    loop.run(browser->shutdown());
}

TEST_F(BrowserOverSSHTest, theEndOfABrowserLeavesTheHostAlone)
{
    reachFarAway();
    // The scan ahead is under way, or about to be.
    loop.run(browser->open(folder.path()));
    loop.run(browser->shutdown());
    EXPECT_FALSE(loop.run(provider->isLive()));
}

} // namespace
} // namespace tw::test
