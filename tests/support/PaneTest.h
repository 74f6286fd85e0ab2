#pragma once

#include "Tarnwick/Panes/PaneController.h"
#include "tests/support/Listings.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingDisplay.h"
#include "tests/support/ScriptedWriter.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tw::test {

/// A pane on a place that answers when the test says so.
class PaneTest : public ::testing::Test {
protected:
    PaneTest()
    {
        provider->usefulDepth = 1;
        browser = std::make_shared<Browser>(
            provider, Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock, .store = nullptr},
            Browser::Config{});
        pane = PaneController::create(
            {.mainContext = loop.context(), .clock = clock, .defaults = defaults, .workers = workers.context()},
            browser, "web1");
        pane->attach(display);
    }

    ~PaneTest() override
    {
        pane.reset();
        workers.drain();
        auto const ended = loop.start(browser->shutdown());
        loop.drain();
        pass(std::chrono::seconds(10)); // what was called off
        EXPECT_TRUE(ended.isDone());
    }

    /// Shows a folder with these files, with the cursor on the first of them. The first such folder is "/x".
    void show(std::vector<std::string> const &files)
    {
        pane->navigate("/x" + std::string(foldersShown++, 'x'), files.front());
        answer(files);
    }

    /// Answers the listing that the pane waits for.
    void answer(std::vector<std::string> const &files)
    {
        loop.drain();
        auto const found =
            std::ranges::find(provider->waiting, pane->requestedPath(), &ScriptedProvider::Request::path);
        ASSERT_NE(found, provider->waiting.end());
        auto const request = *found;
        provider->waiting.erase(found);
        std::vector<ListedEntry> rows;
        for (auto const &name : files)
            rows.push_back(file(name, 1));
        request.answer->succeed({{request.path, listing(request.path, rows, clock->now())}});
        loop.drain();
    }

    void pass(std::chrono::milliseconds time)
    {
        loop.drain();
        clock->advance(time);
        loop.drain();
    }

    bool press(KeyPress const &key)
    {
        auto const isUsed = pane->handleKey(key);
        loop.drain();
        return isUsed;
    }

    bool press(Key key) { return press(KeyPress{.key = key, .text = {}}); }

    void type(std::string const &letters)
    {
        for (auto const letter : letters)
            press({.key = Key::character, .text = std::string(1, letter)});
    }

    std::string cursorName() const { return std::string(pane->cursorName()); }

    std::vector<std::string> marked() const { return pane->model().markedNames(); }

    TestLoop loop;
    TestLoop workers; ///< work that takes a core waits here until the test runs it
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<ScriptedWriter> provider = std::make_shared<ScriptedWriter>();
    std::shared_ptr<Browser> browser;
    MemoryDefaults defaults;
    RecordingDisplay display;
    std::shared_ptr<PaneController> pane;
    std::size_t foldersShown = 0;
};

} // namespace tw::test
