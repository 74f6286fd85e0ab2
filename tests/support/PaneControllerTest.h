#pragma once

#include "Tarnwick/Panes/PaneController.h"
#include "tests/support/FakeConnections.h"
#include "tests/support/Listings.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingDisplay.h"
#include "tests/support/ScriptedProvider.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

namespace tw::test {

/// A pane over a provider that answers when the test says so, on a loop that the test drives.
class PaneControllerTest : public ::testing::Test {
protected:
    PaneControllerTest()
    {
        provider->usefulDepth = 1;
        browser = std::make_shared<Browser>(
            provider, Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock, .store = nullptr},
            Browser::Config{});
        pane = PaneController::create({.mainContext = loop.context(), .clock = clock, .defaults = defaults}, browser,
                                      "local");
        pane->attach(display);
        loop.drain();
    }

    ~PaneControllerTest() override
    {
        pane.reset();
        auto const ended = loop.start(browser->shutdown());
        loop.drain();
        clock->advance(std::chrono::milliseconds(200)); // the spinner timers that were called off
        loop.drain();
        EXPECT_TRUE(ended.isDone());
    }

    void navigate(std::string path, std::string select = {},
                  PaneController::MarksAfter marks = PaneController::MarksAfter::dropped)
    {
        pane->navigate(std::move(path), std::move(select), marks);
        loop.drain();
    }

    /// Answers the fetch of `path` that waits.
    void answer(std::string const &path, std::vector<ListedEntry> const &rows,
                Completeness completeness = Completeness::whole)
    {
        take(path).answer->succeed({{path, listing(path, rows, clock->now(), completeness)}});
        loop.drain();
    }

    void answerError(std::string const &path, std::string const &text)
    {
        take(path).answer->fail(std::make_exception_ptr(std::runtime_error(text)));
        loop.drain();
    }

    ScriptedProvider::Request take(std::string const &path)
    {
        auto const found = std::ranges::find(provider->waiting, path, &ScriptedProvider::Request::path);
        if (found == provider->waiting.end())
            throw std::logic_error("nobody asked for " + path);
        auto request = *found;
        provider->waiting.erase(found);
        return request;
    }

    void show(std::string const &path, std::vector<ListedEntry> const &rows)
    {
        navigate(path);
        answer(path, rows);
    }

    void press(Key key) { press(KeyPress{.key = key, .text = {}}); }

    void press(KeyPress const &key)
    {
        handled = pane->handleKey(key);
        loop.drain();
    }

    static KeyPress shifted(Key key) { return {.key = key, .shift = true, .text = {}}; }

    std::vector<std::string> visible() const { return pane->model().visibleNames(); }

    std::vector<std::string> marked() const { return pane->model().markedNames(); }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<ScriptedProvider> provider = std::make_shared<ScriptedProvider>();
    std::shared_ptr<Browser> browser;
    MemoryDefaults defaults;
    RecordingDisplay display;
    std::shared_ptr<PaneController> pane;
    bool handled = false;
};

/// A pane that goes over to another connection.
class PaneSwitchTest : public PaneControllerTest {
protected:
    PaneSwitchTest() { otherProvider->usefulDepth = 1; }

    ~PaneSwitchTest() override
    {
        pane.reset();
        for (auto const &request : connections.waiting)
            request.answer->fail(std::make_exception_ptr(std::runtime_error("over")));
        loop.start(other->shutdown());
        loop.drain();
    }

    Listings there(std::vector<ListedEntry> const &rows) const
    {
        return {{"/srv", listing("/srv", rows, clock->now())}};
    }

    /// The host that the test's Browser stands for is known from another time.
    void rememberThere()
    {
        otherProvider->answersAtOnce = [&](auto const &) { return there({file("old")}); };
        loop.start(other->open("/srv"));
        loop.drain();
    }

    void openHost(std::string const &host)
    {
        connections.browsers[host] = other;
        pane->open({host, "/srv", true}, connections);
        loop.drain();
    }

    void refuse(std::string const &host, std::string const &why)
    {
        takeConnection(host)->fail(std::make_exception_ptr(std::runtime_error(why)));
        loop.drain();
    }

    void connect(std::string const &host)
    {
        takeConnection(host)->succeed(connections.browsers.at(host));
        loop.drain();
    }

    void switchThere()
    {
        pane->switchTo(other, "other", "/srv");
        loop.drain();
    }

    /// Answers when so many others have had their turn on the loop.
    void answerAfter(int turns, ScriptedProvider::Request request, Listings listings)
    {
        loop.context()->post([this, turns, request = std::move(request), listings = std::move(listings)]() mutable {
            if (turns == 0)
                request.answer->succeed(std::move(listings));
            else
                answerAfter(turns - 1, std::move(request), std::move(listings));
        });
    }

    std::shared_ptr<Completion<std::shared_ptr<Browser>>> takeConnection(std::string const &host)
    {
        auto const request = std::ranges::find(connections.waiting, host, &FakeConnections::Request::host);
        if (request == connections.waiting.end())
            throw std::logic_error("nobody connects to " + host);
        auto answer = request->answer;
        connections.waiting.erase(request);
        return answer;
    }

    std::shared_ptr<ScriptedProvider> otherProvider = std::make_shared<ScriptedProvider>();
    std::shared_ptr<Browser> other = std::make_shared<Browser>(
        otherProvider, Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock, .store = nullptr},
        Browser::Config{});
    FakeConnections connections{browser};
};

} // namespace tw::test
