#include "TWEngine/Browsing/Browser.h"
#include "tests/support/ListingStoreTest.h"
#include "tests/support/ScriptedProvider.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;

/// A host that is asked from this thread; what is kept of it lies in a real file and is read on real threads.
class BrowserWithStoreTest : public ListingStoreTest {
protected:
    BrowserWithStoreTest()
    {
        provider->cacheIdentity = host;
        open();
        makeBrowser();
    }

    ~BrowserWithStoreTest() override { shutdown(); }

    void makeBrowser()
    {
        browser = std::make_shared<Browser>(
            provider, Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock, .store = store},
            Browser::Config{});
    }

    void shutdown()
    {
        loop.run(browser->shutdown());
        provider->waiting.clear();
    }

    /// What the program is when it is started the next time, some time later.
    void restart(std::chrono::duration<double> later)
    {
        shutdown();
        close();
        clock->advance(later);
        ASSERT_TRUE(open());
        makeBrowser();
    }

    void answer(std::vector<ListedEntry> const &rows)
    {
        loop.runUntil([&] { return !provider->waiting.empty(); });
        auto const request = provider->takeOldest();
        request.answer->succeed({{request.path, listing(request.path, rows, clock->now())}});
    }

    /// Opens a folder that nothing is known of, and waits until what the host answers is kept.
    void visit(std::string const &path, std::vector<ListedEntry> const &rows)
    {
        auto const rowsBefore = statistics().rows;
        auto const opened = loop.start(browser->open(path));
        answer(rows);
        answer(rows); // the scan ahead
        loop.runUntil([&] { return opened.isDone(); });
        loop.runUntil([&] { return statistics().rows > rowsBefore; });
    }

    std::shared_ptr<ScriptedProvider> provider = std::make_shared<ScriptedProvider>();
    std::shared_ptr<Browser> browser;
};

TEST_F(BrowserWithStoreTest, afterARestartAFolderIsThereBeforeItsHostHasAnswered)
{
    visit("/srv", {file("a"), directory("b")});
    restart(std::chrono::days(6));

    auto const opened = loop.run(browser->open("/srv"));
    EXPECT_THAT(names(opened.snapshot), ElementsAre("a", "b"));
    EXPECT_TRUE(opened.isStale);
    EXPECT_FALSE(opened.wasCold);
    EXPECT_EQ(loop.run(browser->stats()).diskHits, 1);
    loop.runUntil([&] { return !provider->waiting.empty(); });
    EXPECT_EQ(provider->waiting.front().priority, FetchPriority::background)
        << "it is read again, and not answered yet";
}

static Task<DirectorySnapshot> openAndAwaitUpdate(std::shared_ptr<Browser> browser, std::string path)
{
    auto stream = co_await browser->updates();
    co_await browser->open(path);
    auto update = co_await stream.next();
    co_return *std::move(update);
}

TEST_F(BrowserWithStoreTest, whatTheHostAnswersLaterReplacesWhatWasKept)
{
    visit("/srv", {file("old")});
    restart(std::chrono::hours(1));
    auto const update = loop.start(openAndAwaitUpdate(browser, "/srv"));
    answer({file("new"), file("newer")});
    loop.runUntil([&] { return update.isDone(); });
    EXPECT_THAT(names(update.value()), ElementsAre("new", "newer"));
    loop.runUntil([&] { return load("/srv")->count() == 2; });
}

TEST_F(BrowserWithStoreTest, aFolderThatWasInvalidatedIsColdAfterARestart)
{
    visit("/srv", {file("a")});
    loop.run(browser->invalidate("/srv"));
    loop.runUntil([&] { return statistics().rows == 0; });
    restart(std::chrono::minutes(1));
    auto const opened = loop.start(browser->open("/srv"));
    answer({file("b")});
    loop.runUntil([&] { return opened.isDone(); });
    EXPECT_TRUE(opened.value().wasCold);
}

TEST_F(BrowserWithStoreTest, whatWasKeptForTooLongIsNotShown)
{
    visit("/srv", {file("a")});
    restart(std::chrono::days(8));
    auto const opened = loop.start(browser->open("/srv"));
    answer({file("b")});
    loop.runUntil([&] { return opened.isDone(); });
    EXPECT_THAT(names(opened.value().snapshot), ElementsAre("b"));
    EXPECT_TRUE(opened.value().wasCold);
}

} // namespace
} // namespace tw::test
