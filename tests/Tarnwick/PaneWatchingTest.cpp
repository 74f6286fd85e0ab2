#include "TWEngine/Browsing/LocalProviderError.h"
#include "tests/support/FakeFolderEvents.h"
#include "tests/support/FakeHost.h"
#include "tests/support/PaneControllerTest.h"

#include <gmock/gmock.h>

#include <cerrno>

namespace tw::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

/// A pane that is looked at, with a folder of this machine or of a host on show.
class PaneWatchingTest : public PaneControllerTest {
protected:
    PaneWatchingTest()
    {
        display.watched = Visibility::lookedAt;
        place->usefulDepth = 1;
        host->usefulDepth = 1;
    }

    ~PaneWatchingTest() override
    {
        pane.reset();
        for (auto const &run : host->runs)
            run.answer->succeed({});
        loop.start(placeBrowser->shutdown());
        loop.start(hostBrowser->shutdown());
        pass(seconds(60));
    }

    std::shared_ptr<Browser> browserOf(std::shared_ptr<FileSystemProvider> provider)
    {
        return std::make_shared<Browser>(
            std::move(provider),
            Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock, .store = nullptr},
            Browser::Config{});
    }

    void showHere(std::vector<ListedEntry> const &rows) { show(placeBrowser, place, "local", rows); }

    void showHost(std::vector<ListedEntry> const &rows) { show(hostBrowser, host, "box", rows); }

    void show(std::shared_ptr<Browser> const &source, std::shared_ptr<ScriptedProvider> const &from,
              std::string const &connection, std::vector<ListedEntry> const &rows)
    {
        from->answersAtOnce = [this, rows](std::string const &path) {
            return Listings{{path, listing(path, rows, clock->now())}};
        };
        pane->switchTo(source, connection, "/srv");
        loop.drain();
    }

    /// The folder is different from now on, and an event says so.
    void change(std::vector<ListedEntry> const &rows)
    {
        place->answersAtOnce = [this, rows](std::string const &path) {
            return Listings{{path, listing(path, rows, clock->now())}};
        };
        place->send(FolderWatch::Event::changed);
        pass(milliseconds(300));
    }

    void pass(std::chrono::nanoseconds time)
    {
        loop.drain();
        clock->advance(time);
        loop.drain();
    }

    std::shared_ptr<FakeFolderEvents> place = std::make_shared<FakeFolderEvents>();
    std::shared_ptr<Browser> placeBrowser = browserOf(place);
    std::shared_ptr<FakeHost> host = std::make_shared<FakeHost>();
    std::shared_ptr<Browser> hostBrowser = browserOf(host);
};

TEST_F(PaneWatchingTest, aChangeIsShownAndCursorMarksAndScrollPositionStay)
{
    showHere({file("a"), file("b"), file("c")});
    press(Key::down);
    press(Key::insert);
    ASSERT_EQ(pane->cursorName(), "b");
    display.firstRow = 1;
    change({file("a"), file("aa"), file("b"), file("c")});
    EXPECT_THAT(visible(), ElementsAre("a", "aa", "b", "c"));
    EXPECT_EQ(pane->cursorName(), "b");
    EXPECT_THAT(marked(), ElementsAre("a"));
    EXPECT_EQ(display.firstRow, 1);
    EXPECT_THAT(display.status, HasSubstr("4 files"));
}

TEST_F(PaneWatchingTest, theCursorOnAFileThatVanishesGoesToItsNeighbour)
{
    showHere({file("a"), file("b"), file("c"), file("d")});
    press(Key::down);
    press(Key::down);
    change({file("a"), file("d")});
    EXPECT_EQ(pane->cursorName(), "d");
    change({file("a")});
    EXPECT_EQ(pane->cursorName(), "a");
}

TEST_F(PaneWatchingTest, aSearchGoesOnThroughAChange)
{
    showHere({file("alpha"), file("beta")});
    press({.key = Key::character, .text = "b"});
    auto const status = display.status;
    ASSERT_THAT(status, StartsWith("search: b"));
    change({file("alpha"), file("apple"), file("beta")});
    EXPECT_TRUE(pane->isSearching());
    EXPECT_EQ(display.status, status);
    press({.key = Key::character, .text = "e"});
    EXPECT_EQ(pane->cursorName(), "beta");
}

TEST_F(PaneWatchingTest, aRenameUnderWayKeepsItsRowUntilItEnds)
{
    showHere({file("a"), file("b")});
    press(Key::down);
    pane->beginRename();
    change({file("0"), file("a"), file("b")});
    EXPECT_THAT(visible(), ElementsAre("a", "b"));
    pane->endRename(PaneController::NameEnd::cancelled);
    loop.drain();
    EXPECT_THAT(visible(), ElementsAre("0", "a", "b"));
}

TEST_F(PaneWatchingTest, aLongListingIsPutInOrderOnAWorkerAsThePaneThenShowsIt)
{
    auto const workers = std::make_shared<MainContext>([] {});
    pane = PaneController::create({loop.context(), clock, defaults, workers}, browser, "local");
    pane->attach(display);
    std::vector<ListedEntry> rows;
    for (std::size_t number = 0; number < PaneController::longListing; ++number)
        rows.push_back(file("file " + std::to_string(number)));
    showHere(rows);
    rows.push_back(file("zz"));
    change(rows);
    EXPECT_FALSE(pane->model().rowForName("zz"));
    press(Key::down);
    EXPECT_EQ(pane->cursorName(), "file 0") << "keys are answered meanwhile";
    pane->toggleSort(SortKey::name);
    workers->runPending();
    loop.drain();
    EXPECT_EQ(pane->model().rowForName("zz"), 1);
    EXPECT_EQ(pane->cursorName(), "file 0");
}

TEST_F(PaneWatchingTest, aMessageInTheStatusLineOutlivesAChange)
{
    showHere({file("a")});
    pane->showStatus("copied");
    change({file("a"), file("b")});
    EXPECT_EQ(display.status, "copied");
}

TEST_F(PaneWatchingTest, aFolderThatHasGoneSaysSoOnceAndIsShownAgainWhenItIsBack)
{
    showHere({file("a")});
    place->answersAtOnce = [](std::string const &path) -> Listings {
        throw LocalProviderError::CannotOpen(path, ENOENT);
    };
    place->send(FolderWatch::Event::gone);
    pass(milliseconds(300));
    EXPECT_THAT(visible(), ElementsAre("a"));
    EXPECT_THAT(display.status, HasSubstr("/srv: "));
    pane->showStatus("read");
    pass(seconds(4));
    EXPECT_EQ(display.status, "read");
    change({file("b")});
    pass(seconds(4));
    EXPECT_THAT(visible(), ElementsAre("b"));
    EXPECT_THAT(display.status, HasSubstr("1 files"));
}

TEST_F(PaneWatchingTest, withoutAutoRefreshAPaneWatchesNothing)
{
    defaults.setText("TWAutoRefresh", "false");
    showHere({file("a")});
    pass(seconds(10));
    pane->checkForChanges();
    loop.drain();
    EXPECT_TRUE(place->watched.empty());
    EXPECT_EQ(place->fetches, 1);
    defaults.setText("TWAutoRefresh", "true");
    loop.drain();
    EXPECT_THAT(place->watched, ElementsAre("/srv"));
    defaults.setText("TWAutoRefresh", "false");
    loop.drain();
    EXPECT_EQ(place->ended, 1);
}

TEST_F(PaneWatchingTest, theStatusLineSaysHowOftenASlowHostIsAsked)
{
    showHost({file("a")});
    ASSERT_EQ(host->runs.size(), 1U);
    EXPECT_THAT(display.status, Not(HasSubstr("watching")));
    clock->advance(milliseconds(200));
    host->runs.back().answer->succeed({.output = "1"});
    loop.drain();
    EXPECT_THAT(display.status, EndsWith("   ·  watching every 10s"));
    pane->showStatus("copied");
    pass(seconds(10));
    host->runs.back().answer->succeed({.output = "1"});
    loop.drain();
    EXPECT_EQ(display.status, "copied");
}

TEST_F(PaneWatchingTest, aChangeOnAHostIsShown)
{
    showHost({file("a")});
    host->runs.back().answer->succeed({.output = "1"});
    pass(seconds(3));
    ASSERT_EQ(host->runs.size(), 2U);
    host->answersAtOnce = [this](std::string const &path) {
        return Listings{{path, listing(path, {file("a"), file("b")}, clock->now())}};
    };
    host->runs.back().answer->succeed({.output = "2"});
    loop.drain();
    EXPECT_THAT(visible(), ElementsAre("a", "b"));
}

TEST_F(PaneWatchingTest, whileAnotherFolderIsOpenedTheOneOnShowIsNotLookedAt)
{
    showHere({file("a")});
    place->answersAtOnce = nullptr;
    pane->navigate("/other");
    loop.drain();
    auto const before = place->fetches;
    pane->checkForChanges();
    loop.drain();
    EXPECT_EQ(place->fetches, before);
    place->takeOldest().answer->fail(std::make_exception_ptr(std::runtime_error("no")));
    loop.drain();
    pane->checkForChanges();
    loop.drain();
    EXPECT_EQ(place->fetches, before) << "nor while the strip says why it was not opened";
}

} // namespace
} // namespace tw::test
