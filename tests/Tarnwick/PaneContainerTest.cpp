#include "Tarnwick/Window/PaneContainer.h"

#include "tests/support/FakeConnections.h"
#include "tests/support/Listings.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingDisplay.h"
#include "tests/support/ScriptedProvider.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::ElementsAre;

class RecordingTabs final : public TabsDisplay {
public:
    std::vector<std::string> titles;
    std::vector<std::string> toolTips;
    std::size_t selected = 0;
    std::shared_ptr<PaneController> pane;

    void showTabs(std::vector<TabItem> const &tabs, std::size_t index) override
    {
        titles.clear();
        toolTips.clear();
        for (auto const &tab : tabs) {
            titles.push_back(tab.title);
            toolTips.push_back(tab.toolTip);
        }
        selected = index;
    }

    void showPane(std::shared_ptr<PaneController> const &shown) override { pane = shown; }
};

/// The tabs of one side, on a file system in which every folder holds "a" and ".b".
class PaneContainerTest : public ::testing::Test {
protected:
    PaneContainerTest()
    {
        provider->usefulDepth = 1;
        container.attach(tabs);
    }

    ~PaneContainerTest() override
    {
        for (auto const &request : connections.waiting)
            request.answer->fail(std::make_exception_ptr(std::runtime_error("over")));
        answerAll();
        defaults.setText("TWAutoRefresh", "false"); // ends what the panes wait for
        for (auto const &each : {browser, host}) {
            auto const ended = loop.start(each->shutdown());
            loop.drain();
            EXPECT_TRUE(ended.isDone());
        }
        clock->advance(std::chrono::seconds(1));
        loop.drain();
    }

    void answerAll()
    {
        loop.drain();
        while (!provider->waiting.empty()) {
            auto const request = provider->takeOldest();
            request.answer->succeed({{request.path, listing(request.path, {file("a"), file(".b")}, clock->now())}});
            loop.drain();
        }
    }

    void goTo(std::string const &path)
    {
        container.activePane()->navigate(path);
        answerAll();
    }

    /// Tabs on these local folders, the last of which shows.
    void openTabs(std::vector<std::string> const &paths)
    {
        goTo(paths.front());
        for (std::size_t at = 1; at < paths.size(); ++at) {
            container.duplicateCurrentTab();
            goTo(paths[at]);
        }
    }

    static PaneState tabOn(std::string const &connection, std::string const &path)
    {
        return {.connection = connection, .path = path};
    }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<ScriptedProvider> provider = std::make_shared<ScriptedProvider>();
    std::shared_ptr<Browser> browser = std::make_shared<Browser>(
        provider, Browser::Collaborators{Strand(loop.context()), clock, nullptr}, Browser::Config{});
    std::shared_ptr<Browser> host = std::make_shared<Browser>(
        provider, Browser::Collaborators{Strand(loop.context()), clock, nullptr}, Browser::Config{});
    MemoryDefaults defaults;
    FakeConnections connections{browser};
    int changes = 0;
    int selections = 0;
    RecordingTabs tabs;
    PaneContainer container{
        {loop.context(), clock, defaults},
        connections,
        {.configurePane = [](PaneController &) {},
         .onTabsChanged = [this] { ++changes; },
         .onSelected = [this] { ++selections; },
         .open = [this](PaneSpec place,
                        std::shared_ptr<PaneController> const &pane) { pane->open(std::move(place), connections); }}};
};

TEST_F(PaneContainerTest, aNewTabIsACopyOfTheOneOnShow)
{
    openTabs({"/usr"});
    container.activePane()->toggleSort(SortKey::size);
    container.duplicateCurrentTab();
    answerAll();
    EXPECT_THAT(tabs.titles, ElementsAre("usr", "usr"));
    EXPECT_EQ(tabs.selected, 1U);
    EXPECT_EQ(tabs.pane, container.activePane());
    EXPECT_EQ(container.activePane()->pathOnShow(), "/usr");
    EXPECT_EQ(container.activePane()->model().viewOptions().sortKey, SortKey::size);
    EXPECT_EQ(selections, 1);
}

TEST_F(PaneContainerTest, aTabIsTitledByItsFolder)
{
    openTabs({"/usr", "/"});
    EXPECT_THAT(tabs.titles, ElementsAre("usr", "/"));
    EXPECT_THAT(tabs.toolTips, ElementsAre("local:/usr", "local:/"));
    goTo("/etc");
    EXPECT_THAT(tabs.titles, ElementsAre("usr", "etc"));
}

TEST_F(PaneContainerTest, theOnlyTabStays)
{
    openTabs({"/usr"});
    container.closeTab(0);
    EXPECT_EQ(container.tabCount(), 1U);
    EXPECT_EQ(container.activePane()->pathOnShow(), "/usr");
}

TEST_F(PaneContainerTest, closingATabShowsTheOneThatThenHasItsPlace)
{
    openTabs({"/a", "/b", "/c"});
    container.select(1);
    container.closeTab(1);
    EXPECT_EQ(tabs.pane->pathOnShow(), "/c");
    EXPECT_THAT(tabs.titles, ElementsAre("a", "c"));
    container.closeTab(1);
    EXPECT_EQ(tabs.pane->pathOnShow(), "/a");
}

TEST_F(PaneContainerTest, closingATabToTheLeftShowsTheTabThatStoodToTheRight)
{
    openTabs({"/a", "/b", "/c"});
    container.select(1);
    container.closeTab(0);
    EXPECT_EQ(container.activeIndex(), 1U);
    EXPECT_EQ(tabs.pane->pathOnShow(), "/c");
}

TEST_F(PaneContainerTest, aClosedTabIsGone)
{
    openTabs({"/a", "/b"});
    std::weak_ptr const closed = container.activePane();
    container.closeTab(1);
    loop.drain();
    EXPECT_TRUE(closed.expired());
}

TEST_F(PaneContainerTest, aNameThatIsEditedIsNotLostWithItsTab)
{
    openTabs({"/a", "/b"});
    auto const pane = container.activePane();
    RecordingDisplay display;
    pane->attach(display);
    std::vector<std::string> requests;
    pane->callbacks.onRenameRequested = [&](std::string const &from, std::string const &to) {
        requests.push_back(from + " -> " + to);
    };
    pane->rowClicked(1);
    pane->beginRename();
    ASSERT_TRUE(display.nameField);
    display.nameField->text = "new";
    container.closeTab(1);
    EXPECT_THAT(requests, ElementsAre("a -> new"));
    pane->detach(display);
}

TEST_F(PaneContainerTest, theOthersCanBeClosedAtOnce)
{
    openTabs({"/a", "/b", "/c"});
    container.closeOthers(1);
    EXPECT_THAT(tabs.titles, ElementsAre("b"));
    EXPECT_EQ(tabs.pane->pathOnShow(), "/b");
}

TEST_F(PaneContainerTest, aTabThatIsMovedKeepsWhetherItShows)
{
    openTabs({"/a", "/b", "/c", "/d"});

    struct Move {
        std::size_t shown, from, to, after;
    };

    for (auto const &move : {Move{1, 1, 3, 3}, {1, 0, 2, 0}, {1, 3, 1, 2}, {1, 2, 3, 1}, {1, 0, 1, 0}, {1, 1, 0, 0}}) {
        container.select(move.shown);
        auto const pane = container.activePane();
        container.moveTab(move.from, move.to);
        EXPECT_EQ(container.activeIndex(), move.after) << move.from << " to " << move.to;
        EXPECT_EQ(container.activePane(), pane);
        EXPECT_EQ(tabs.selected, move.after);
    }
}

TEST_F(PaneContainerTest, anIndexOutsideChangesNothing)
{
    openTabs({"/a", "/b"});
    changes = 0;
    container.select(2);
    container.closeTab(2);
    container.moveTab(0, 2);
    container.moveTab(2, 0);
    container.moveTab(1, 1);
    container.closeOthers(2);
    container.duplicateTab(2);
    EXPECT_EQ(changes, 0);
    EXPECT_THAT(tabs.titles, ElementsAre("a", "b"));
}

TEST_F(PaneContainerTest, theNextTabBehindTheLastIsTheFirst)
{
    openTabs({"/a", "/b"});
    container.selectNext();
    EXPECT_EQ(container.activeIndex(), 0U);
    container.selectNext();
    EXPECT_EQ(container.activeIndex(), 1U);
}

TEST_F(PaneContainerTest, theTabBeforeTheFirstIsTheLast)
{
    openTabs({"/a", "/b", "/c"});
    container.selectPrevious();
    EXPECT_EQ(container.activeIndex(), 1U);
    container.selectPrevious();
    container.selectPrevious();
    EXPECT_EQ(container.activeIndex(), 2U);
}

TEST_F(PaneContainerTest, allTabsOfASideShowTheirRowsInTheSameWay)
{
    openTabs({"/a", "/b"});
    container.activePane()->toggleHidden();
    container.activePane()->toggleSort(SortKey::date);
    for (auto const &pane : container.panes()) {
        EXPECT_TRUE(pane->model().viewOptions().showHidden);
        EXPECT_EQ(pane->model().viewOptions().sortKey, SortKey::date);
        EXPECT_THAT(pane->model().visibleNames(), testing::SizeIs(2));
    }
}

TEST_F(PaneContainerTest, thereIsALimitToTheTabs)
{
    openTabs({"/a"});
    for (std::size_t at = 0; at < SideState::mostTabs + 5; ++at)
        container.duplicateCurrentTab();
    EXPECT_EQ(container.tabCount(), SideState::mostTabs);
    answerAll();
}

TEST_F(PaneContainerTest, whatIsRememberedComesBack)
{
    SideState const remembered{
        .tabs = {{.connection = "local", .path = "/a", .sortKey = "size", .sortAscending = false, .showHidden = true},
                 tabOn("local", "/b")},
        .active = 1};
    container.restore(remembered);
    answerAll();
    EXPECT_THAT(tabs.titles, ElementsAre("a", "b"));
    EXPECT_EQ(tabs.selected, 1U);
    EXPECT_EQ(tabs.pane->pathOnShow(), "/b");
    container.select(0);
    answerAll();
    EXPECT_EQ(tabs.pane->pathOnShow(), "/a");
    EXPECT_EQ(tabs.pane->model().viewOptions(),
              (ViewOptions{.sortKey = SortKey::size, .ascending = false, .showHidden = true}));
    EXPECT_EQ(container.state().tabs.at(0), remembered.tabs.at(0));
}

TEST_F(PaneContainerTest, anActiveIndexBehindTheLastTabIsTheLastOne)
{
    container.restore({.tabs = {tabOn("local", "/a"), tabOn("local", "/b")}, .active = 9});
    EXPECT_EQ(container.activeIndex(), 1U);
}

TEST_F(PaneContainerTest, aSortKeyThatNobodyKnowsIsTheUsualOne)
{
    container.restore({.tabs = {{.connection = "local", .path = "/a", .sortKey = "colour", .sortAscending = false}}});
    EXPECT_EQ(container.activePane()->model().viewOptions(), ViewOptions());
}

TEST_F(PaneContainerTest, aRememberedTabAsksNobodyUntilItIsShown)
{
    container.restore({.tabs = {tabOn("local", "/a"), tabOn("web", "/srv/log"), tabOn("mail", "/")}, .active = 0});
    answerAll();
    EXPECT_TRUE(connections.waiting.empty());
    EXPECT_THAT(tabs.titles, ElementsAre("a", "web:log", "mail:/"));
    EXPECT_THAT(tabs.toolTips, ElementsAre("local:/a", "web:/srv/log", "mail:/"));
    EXPECT_EQ(container.state().tabs.at(1).connection, "web");
    EXPECT_EQ(container.state().tabs.at(1).path, "/srv/log");
    container.select(1);
    loop.drain();
    ASSERT_EQ(connections.waiting.size(), 1U);
    EXPECT_EQ(connections.waiting.at(0).host, "web");
}

TEST_F(PaneContainerTest, aHostThatCannotBeReachedStaysThePlaceOfItsTab)
{
    container.restore({.tabs = {tabOn("web", "/srv")}, .active = 0});
    loop.drain();
    EXPECT_EQ(container.state().tabs.at(0).connection, "web") << "on its way";
    EXPECT_EQ(container.state().tabs.at(0).path, "/srv");
    connections.waiting.at(0).answer->fail(std::make_exception_ptr(std::runtime_error("no way")));
    answerAll();
    EXPECT_EQ(container.activePane()->connectionName(), "local") << "it shows the home folder";
    EXPECT_EQ(container.state().tabs.at(0).connection, "web");
    EXPECT_EQ(container.state().tabs.at(0).path, "/srv");
    EXPECT_THAT(tabs.titles, ElementsAre("web:srv"));
    goTo("/usr");
    EXPECT_EQ(container.state().tabs.at(0).connection, "local") << "the user has gone elsewhere";
    EXPECT_THAT(tabs.titles, ElementsAre("usr"));
}

TEST_F(PaneContainerTest, whoTakesTheFailureOfAHostAwayStaysAtHome)
{
    container.restore({.tabs = {tabOn("web", "/srv")}, .active = 0});
    loop.drain();
    connections.waiting.at(0).answer->fail(std::make_exception_ptr(std::runtime_error("no way")));
    answerAll();
    EXPECT_TRUE(container.activePane()->giveUp());
    EXPECT_EQ(container.state().tabs.at(0).path, PaneSpec::localHome().path);
}

TEST_F(PaneContainerTest, aPlaceWithoutAPathIsRememberedAsSuch)
{
    container.restore(PaneSpec{.connection = "web", .path = "/"});
    loop.drain();
    auto const state = container.state();
    EXPECT_EQ(
        state.tabs.at(0),
        (PaneState{.connection = "web", .path = "", .sortKey = "name", .sortAscending = true, .showHidden = false}));
}

TEST_F(PaneContainerTest, theCopyOfASleepingTabGoesWhereItSleeps)
{
    container.restore({.tabs = {tabOn("local", "/a"), tabOn("local", "/b")}, .active = 0});
    container.duplicateTab(1);
    answerAll();
    EXPECT_THAT(tabs.titles, ElementsAre("a", "b", "b"));
    EXPECT_EQ(tabs.pane->pathOnShow(), "/b");
}

TEST_F(PaneContainerTest, afterASleepOfTheMachineOnlyTheHostOnShowIsAsked)
{
    for (auto const *path : {"/a", "/b"}) {
        if (container.activePane()->model().snapshot())
            container.duplicateCurrentTab();
        container.activePane()->switchTo(host, "web", path);
        answerAll();
    }
    auto const before = provider->fetches;
    container.revalidateAfterWake();
    answerAll();
    EXPECT_EQ(provider->fetches, before + 1);
    container.select(0);
    answerAll();
    EXPECT_EQ(provider->fetches, before + 2) << "read when it is shown";
    container.select(1);
    container.select(0);
    answerAll();
    EXPECT_EQ(provider->fetches, before + 2) << "once";
}

TEST_F(PaneContainerTest, afterASleepOfTheMachineItsOwnFoldersAreAsTheyWere)
{
    openTabs({"/a"});
    auto const before = provider->fetches;
    container.revalidateAfterWake();
    answerAll();
    EXPECT_EQ(provider->fetches, before);
}

} // namespace
} // namespace tw::test
