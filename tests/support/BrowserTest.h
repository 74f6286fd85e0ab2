#pragma once

#include "TWEngine/Browsing/Browser.h"
#include "tests/support/Listings.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingStore.h"
#include "tests/support/ScriptedProvider.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {

/// Everything lives on the test's own loop, and time stands still, so that each step is seen by itself.
class BrowserTest : public ::testing::Test {
protected:
    void useStore()
    {
        provider->cacheIdentity = "scripted-cache";
        store = std::make_shared<RecordingStore>();
        makeBrowser({});
    }

    void makeBrowser(Browser::Config config)
    {
        browser = std::make_shared<Browser>(
            provider,
            Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock, .store = store, .memory = memory},
            config);
    }

    Started<OpenResult> open(std::string path)
    {
        auto started = loop.start(browser->open(std::move(path)));
        loop.drain();
        return started;
    }

    std::shared_ptr<UpdateStream<DirectorySnapshot>> subscribe() { return get(sharedUpdates(browser)); }

    static Task<std::shared_ptr<UpdateStream<DirectorySnapshot>>> sharedUpdates(std::shared_ptr<Browser> from)
    {
        auto stream = co_await from->updates();
        co_return std::make_shared<UpdateStream<DirectorySnapshot>>(std::move(stream));
    }

    template <class T>
    T get(Task<T> task)
    {
        auto const started = loop.start(std::move(task));
        loop.drain();
        return started.value();
    }

    Listings one(std::string const &path, std::vector<ListedEntry> const &rows,
                 Completeness completeness = Completeness::whole)
    {
        return {{path, listing(path, rows, clock->now(), completeness)}};
    }

    /// Answers the oldest fetch that waits.
    void answerWith(Listings listings)
    {
        provider->takeOldest().answer->succeed(std::move(listings));
        loop.drain();
    }

    void answer(std::vector<ListedEntry> const &rows, Completeness completeness = Completeness::whole)
    {
        auto const request = provider->takeOldest();
        request.answer->succeed(one(request.path, rows, completeness));
        loop.drain();
    }

    void answerError(std::string const &text)
    {
        provider->takeOldest().answer->fail(std::make_exception_ptr(std::runtime_error(text)));
        loop.drain();
    }

    /// Opens a path that nothing is known of, and answers it and the scan ahead behind it.
    void openCold(std::string const &path, std::vector<ListedEntry> const &rows)
    {
        open(path);
        answer(rows);
        while (!provider->waiting.empty())
            answer(rows);
    }

    std::vector<std::string> namesIn(Started<OpenResult> const &opened) { return names(opened.value().snapshot); }

    /// "path depth priority" of each fetch that waits.
    std::vector<std::string> asked() const
    {
        std::vector<std::string> result;
        for (auto const &request : provider->waiting) {
            result.push_back(request.path + " " + std::to_string(request.depth) +
                             (request.priority == FetchPriority::interactive ? " interactive" : " background"));
        }
        return result;
    }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<ScriptedProvider> provider = std::make_shared<ScriptedProvider>();
    std::shared_ptr<RecordingStore> store;
    std::shared_ptr<ListingBudget> memory;
    std::shared_ptr<Browser> browser;

    BrowserTest() { makeBrowser({}); }

    ~BrowserTest() override
    {
        // Nothing may be left suspended: frames that nobody resumes are a leak.
        auto const ended = loop.start(browser->shutdown());
        loop.drain();
        EXPECT_TRUE(ended.isDone());
    }
};

} // namespace tw::test
