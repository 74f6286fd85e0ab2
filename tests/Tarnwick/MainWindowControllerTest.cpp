#include "tests/support/MainWindowControllerTest.h"

#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Shell/RemoteShellError.h"
#include "tests/support/RecordingStore.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

TEST_F(MainWindowControllerTest, eachSideOpensWhatTheCommandLineAsksFor)
{
    start({.left = PaneSpec{"local", "/usr", true}, .right = PaneSpec{"local", "/etc", true}});
    EXPECT_EQ(left.path, "/usr");
    EXPECT_EQ(right.path, "/etc");
}

TEST_F(MainWindowControllerTest, theSideThatWasActiveLastTimeIsActiveAgain)
{
    start({});
    EXPECT_EQ(controller.activeSide(), PaneSide::left);
    controller.setActive(PaneSide::right);
    EXPECT_EQ(defaults.text("tw.activeSide"), "right");
    for (auto const &[stored, side] :
         {std::pair("right", PaneSide::right), {"left", PaneSide::left}, {"top", PaneSide::left}}) {
        defaults.setText("tw.activeSide", stored);
        start({});
        EXPECT_EQ(controller.activeSide(), side) << stored;
    }
}

TEST_F(MainWindowControllerTest, aSideThatIsNotAskedForOpensTheHomeDirectory)
{
    start({});
    EXPECT_EQ(left.path, PaneSpec::localHome().path);
    EXPECT_EQ(right.path, PaneSpec::localHome().path);
}

TEST_F(MainWindowControllerTest, theLeftSideIsActiveAtFirst)
{
    start({});
    EXPECT_EQ(controller.activeSide(), PaneSide::left);
    EXPECT_TRUE(left.isActive);
    EXPECT_TRUE(left.hasFocus);
    EXPECT_FALSE(right.isActive);
}

TEST_F(MainWindowControllerTest, theOtherPaneBecomesActiveWhenItGetsTheKeyboard)
{
    start({});
    controller.pane(PaneSide::left)->handleKey({.key = Key::tab, .text = {}});
    EXPECT_TRUE(right.hasFocus);
    controller.pane(PaneSide::right)->activated();
    EXPECT_EQ(controller.activeSide(), PaneSide::right);
    EXPECT_TRUE(right.isActive);
    EXPECT_FALSE(left.isActive);
}

class HostPaneTest : public MainWindowControllerTest {
protected:
    HostPaneTest()
    {
        connections.browsers["web"] = host;
        start({.left = PaneSpec{"local", "/usr", true}, .right = {}});
    }

    ~HostPaneTest() override
    {
        for (auto const side : {PaneSide::left, PaneSide::right})
            controller.pane(side)->navigate("/"); // whatever was under way is for nothing
        for (auto const &request : connections.waiting)
            request.answer->fail(std::make_exception_ptr(Cancelled()));
        loop.drain();
        auto const ended = loop.start(host->shutdown());
        loop.drain();
        EXPECT_TRUE(ended.isDone());
    }

    void openHost(PaneSpec destination)
    {
        controller.open(std::move(destination), controller.pane(PaneSide::left));
        loop.drain();
    }

    void connect()
    {
        connections.waiting.at(0).answer->succeed(host);
        loop.drain();
    }

    void refuse(std::string const &why)
    {
        connections.waiting.at(0).answer->fail(std::make_exception_ptr(std::runtime_error(why)));
        loop.drain();
    }

    /// A folder of this machine, however many times it is asked for.
    void answerLocal()
    {
        while (!provider->waiting.empty()) {
            auto const request = provider->takeOldest();
            request.answer->succeed({{request.path, listing(request.path, {file("a")}, clock->now())}});
            loop.drain();
        }
    }

    void pick(ConnectionItem::Kind kind, std::string const &title, PaneSide side = PaneSide::left)
    {
        controller.pickConnection({.kind = kind, .title = title, .host = title, .isEnabled = true}, side);
        loop.drain();
    }

    void pickHost(std::string const &name) { pick(ConnectionItem::Kind::host, name); }

    void pickLocal() { pick(ConnectionItem::Kind::local, localTitle); }

    void answerHost(std::string const &path)
    {
        hostProvider->takeOldest().answer->succeed({{path, listing(path, {file("remote")}, clock->now())}});
        loop.drain();
    }

    static std::shared_ptr<ScriptedProvider> makeHostProvider()
    {
        auto provider = std::make_shared<ScriptedProvider>();
        provider->usefulDepth = 1;
        provider->cacheIdentity = "ssh:web";
        return provider;
    }

    /// From another time.
    void remember(std::string const &path)
    {
        store->rows.insert_or_assign({"ssh:web", path}, listing(path, {file("old")}, clock->now()));
    }

    std::shared_ptr<RecordingStore> store = std::make_shared<RecordingStore>();
    std::shared_ptr<ScriptedProvider> hostProvider = makeHostProvider();
    std::shared_ptr<Browser> host = std::make_shared<Browser>(
        hostProvider, Browser::Collaborators{Strand(loop.context()), clock, store}, Browser::Config{});
    PaneController const &pane = *controller.pane(PaneSide::left);
};

TEST_F(HostPaneTest, aHostIsConnectedAndItsFolderOpened)
{
    openHost(PaneSpec{"web", "/srv", true});
    EXPECT_EQ(connections.waiting.at(0).host, "web");
    EXPECT_EQ(left.path, "connecting…");
    EXPECT_TRUE(left.isSpinning);
    connect();
    answerHost("/srv");
    EXPECT_EQ(left.path, "/srv");
    EXPECT_FALSE(left.isSpinning);
    EXPECT_EQ(pane.connectionName(), "web");
    EXPECT_EQ(left.connection, "web");
    EXPECT_THAT(pane.model().visibleNames(), ::testing::ElementsAre("remote"));
}

TEST_F(HostPaneTest, whatIsOnShowBelongsToItsConnectionUntilTheHostsFolderIsThere)
{
    openHost(PaneSpec{"web", "/srv", true});
    connect();
    EXPECT_EQ(pane.connectionName(), "local");
    EXPECT_EQ(pane.pathOnShow(), "/usr");
    hostProvider->takeOldest().answer->fail(std::make_exception_ptr(std::runtime_error("no such folder")));
    loop.drain();
    EXPECT_EQ(left.connection, "local");
    EXPECT_EQ(pane.connectionName(), "local") << "a key must not act on a host while a local folder is on show";
    EXPECT_EQ(pane.pathOnShow(), "/usr");
    EXPECT_EQ(left.path, "/usr");
    EXPECT_THAT(left.noticeText(), ::testing::HasSubstr("no such folder"));
}

TEST_F(HostPaneTest, aHostThatCannotBeReachedIsToldAndThePaneStays)
{
    openHost(PaneSpec{"web", "/srv", true});
    refuse("cannot reach web: no route to host");
    EXPECT_THAT(left.noticeText(), ::testing::HasSubstr("no route to host"));
    EXPECT_EQ(left.path, "/usr");
    EXPECT_FALSE(left.isSpinning);
    EXPECT_EQ(pane.connectionName(), "local");
}

TEST_F(HostPaneTest, aPaneThatHasGoneElsewhereMeanwhileIsNotPulledToTheHost)
{
    openHost(PaneSpec{"web", "/srv", true});
    controller.pane(PaneSide::left)->navigate("/usr");
    loop.drain();
    connect();
    EXPECT_EQ(pane.connectionName(), "local");
    EXPECT_TRUE(hostProvider->waiting.empty());
}

TEST_F(HostPaneTest, aFolderFromAnotherTimeIsOnShowBeforeTheHostIsReachedAndCorrectedThen)
{
    remember("/srv");
    openHost(PaneSpec{"web", "/srv", true});
    EXPECT_EQ(left.path, "/srv");
    EXPECT_EQ(left.connection, "web");
    EXPECT_EQ(pane.connectionName(), "web");
    EXPECT_EQ(left.status, "connecting to web…");
    EXPECT_TRUE(left.isSpinning);
    EXPECT_THAT(pane.model().visibleNames(), ::testing::ElementsAre("old"));

    connect();
    EXPECT_FALSE(left.isSpinning);
    EXPECT_THAT(left.status, ::testing::HasSubstr("1 files"));
    answerHost("/srv");
    EXPECT_EQ(left.path, "/srv");
    EXPECT_THAT(pane.model().visibleNames(), ::testing::ElementsAre("remote"));
}

TEST_F(HostPaneTest, aHostThatIsUpBeforeItsRememberedFolderArrivesIsNotSaidToBeOnItsWay)
{
    remember("/srv");
    controller.open(PaneSpec{"web", "/srv", true}, controller.pane(PaneSide::left));
    connections.waiting.at(0).answer->succeed(host);
    loop.drain();
    EXPECT_EQ(connections.waiting.size(), 1U) << "one attempt";
    EXPECT_EQ(left.path, "/srv");
    EXPECT_FALSE(left.isSpinning);
    EXPECT_THAT(left.status, ::testing::HasSubstr("1 files"));
}

TEST_F(HostPaneTest, aRefusalBeforeTheRememberedFolderArrivesStaysToBeRead)
{
    remember("/srv");
    controller.open(PaneSpec{"web", "/srv", true}, controller.pane(PaneSide::left));
    connections.waiting.at(0).answer->fail(std::make_exception_ptr(std::runtime_error("no way")));
    loop.drain();
    EXPECT_THAT(left.noticeText(), ::testing::HasSubstr("no way"));
    EXPECT_EQ(left.path, "/srv");
    EXPECT_FALSE(left.isSpinning);
    EXPECT_THAT(pane.model().visibleNames(), ::testing::ElementsAre("old"));
}

TEST_F(HostPaneTest, aFolderFromAnotherTimeStaysWhenTheHostCannotBeReached)
{
    remember("/srv");
    openHost(PaneSpec{"web", "/srv", true});
    refuse("no way");
    EXPECT_THAT(left.noticeText(), ::testing::HasSubstr("no way"));
    EXPECT_FALSE(left.isSpinning);
    EXPECT_EQ(left.path, "/srv");
    EXPECT_EQ(pane.connectionName(), "web");
    EXPECT_THAT(pane.model().visibleNames(), ::testing::ElementsAre("old"));
}

TEST_F(HostPaneTest, whoHasGoneOnAmongTheRememberedFoldersIsToldThatTheHostCannotBeReached)
{
    remember("/srv");
    remember("/");
    openHost(PaneSpec{"web", "/srv", true});
    controller.pane(PaneSide::left)->goUp();
    loop.drain();
    EXPECT_EQ(left.path, "/");
    refuse("no way");
    EXPECT_THAT(left.noticeText(), ::testing::HasSubstr("no way"));
    EXPECT_EQ(left.path, "/");
    EXPECT_EQ(pane.connectionName(), "web");
}

TEST_F(HostPaneTest, whoHasLeftForThisMachineMeanwhileHearsNothingOfTheHost)
{
    remember("/srv");
    openHost(PaneSpec{"web", "/srv", true});
    controller.open(PaneSpec{"local", "/usr", true}, controller.pane(PaneSide::left));
    loop.drain();
    auto const before = left.status;
    refuse("no way");
    EXPECT_EQ(left.status, before);
    EXPECT_EQ(left.noticeText(), "");
    EXPECT_EQ(pane.connectionName(), "local");
}

TEST_F(HostPaneTest, withoutAPathTheHostSaysWhereToBegin)
{
    remember("/");
    openHost(PaneSpec{"web", "/", false});
    EXPECT_EQ(pane.connectionName(), "local") << "what is remembered may be another folder than the one it begins in";
    EXPECT_EQ(left.path, "connecting…");
    refuse("no way");
}

TEST_F(HostPaneTest, whileAHostIsReachedItsNameStandsBesideConnecting)
{
    pickHost("web");
    EXPECT_EQ(left.connection, "web");
    EXPECT_EQ(left.path, "connecting…");
    EXPECT_EQ(left.status, "");
    EXPECT_TRUE(left.isSpinning);
    EXPECT_EQ(pane.connectionName(), "local") << "the listing on show is still this machine's";
}

TEST_F(HostPaneTest, aHostThatCannotBeReachedTakesItsNameBack)
{
    pickHost("web");
    refuse("no route to host");
    EXPECT_EQ(left.connection, "local");
    EXPECT_EQ(left.path, "/usr");
    EXPECT_THAT(left.noticeText(), ::testing::HasSubstr("no route to host"));
    EXPECT_FALSE(left.isSpinning);
}

TEST_F(HostPaneTest, goingElsewhereWhileAHostIsReachedTakesItsNameBackAtOnce)
{
    pickHost("web");
    controller.pane(PaneSide::left)->navigate("/usr");
    EXPECT_EQ(left.connection, "local");
    EXPECT_EQ(left.path, "/usr");
    loop.drain();
    connect();
    EXPECT_EQ(left.connection, "local");
}

TEST_F(HostPaneTest, thisMachineCanBeChosenWhileAHostIsReached)
{
    pickHost("web");
    pickLocal();
    EXPECT_EQ(left.connection, "local");
    EXPECT_EQ(left.path, PaneSpec::localHome().path);
    refuse("too late to be of interest");
    answerLocal();
    EXPECT_EQ(pane.pathOnShow(), PaneSpec::localHome().path);
    EXPECT_FALSE(left.isSpinning);
    EXPECT_EQ(left.noticeText(), "");
}

TEST_F(HostPaneTest, anotherHostCanBeChosenWhileOneIsReached)
{
    pickHost("slow");
    pickHost("web");
    ASSERT_EQ(connections.waiting.size(), 2U);
    refuse("slow is slow");
    EXPECT_EQ(left.connection, "web");
    EXPECT_EQ(left.path, "connecting…");
    connections.waiting.at(1).answer->succeed(host);
    loop.drain();
    answerHost("/");
    EXPECT_EQ(pane.connectionName(), "web");
}

TEST_F(HostPaneTest, fromAHostThisMachineIsItsHomeFolder)
{
    pickHost("web");
    connect();
    answerHost("/");
    ASSERT_EQ(pane.connectionName(), "web");
    pickLocal();
    answerLocal();
    EXPECT_EQ(pane.connectionName(), "local");
    EXPECT_EQ(left.connection, "local");
    EXPECT_EQ(pane.pathOnShow(), PaneSpec::localHome().path);
}

TEST_F(HostPaneTest, theHostOnShowCanBeChosenAgain)
{
    openHost(PaneSpec{"web", "/srv", true});
    connect();
    answerHost("/srv");
    pickHost("web");
    ASSERT_EQ(connections.waiting.size(), 2U);
    connections.waiting.at(1).answer->succeed(host);
    loop.drain();
    answerHost("/");
    EXPECT_EQ(pane.connectionName(), "web");
    EXPECT_EQ(pane.pathOnShow(), "/");
}

TEST_F(HostPaneTest, aChoiceActsOnThePaneOfItsMenuWhichBecomesTheActiveOne)
{
    pick(ConnectionItem::Kind::host, "web", PaneSide::right);
    EXPECT_EQ(right.path, "connecting…");
    EXPECT_EQ(left.path, "/usr");
    EXPECT_EQ(controller.activeSide(), PaneSide::right);
    EXPECT_TRUE(right.isActive);
    EXPECT_TRUE(right.hasFocus);
}

TEST_F(HostPaneTest, aHostsNameHidesNothing)
{
    pickHost("a\xE2\x80\xAE\nb");
    EXPECT_EQ(left.connection, "a\xEF\xBF\xBD\xE2\x90\x8A"
                               "b");
}

TEST_F(HostPaneTest, aHostAtTheStartThatCannotBeReachedLeavesThePaneAtHome)
{
    RecordingDisplay display;
    MainWindowController other({loop.context(), clock, defaults}, connections);
    other.pane(PaneSide::left)->attach(display);
    other.start({.left = PaneSpec{"web", "/srv", true}, .right = {}});
    loop.drain();
    refuse("no way");
    EXPECT_EQ(display.path, PaneSpec::localHome().path);
    EXPECT_THAT(display.noticeText(), ::testing::HasSubstr("no way"));
    other.pane(PaneSide::left)->detach(display);
}

TEST_F(HostPaneTest, theDetailsOfAFailureAreShownOverTheWindow)
{
    openHost(PaneSpec{"web", "/srv", true});
    connections.waiting.at(0).answer->fail(std::make_exception_ptr(RemoteShellError::ConnectFailed("web", "no way")));
    loop.drain();
    controller.pane(PaneSide::left)->noticeActionChosen(PaneNotice::Action::details);
    loop.drain();
    ASSERT_EQ(window.questions->detailsShown.size(), 1U);
    EXPECT_THAT(window.questions->detailsShown.at(0).question.words, ::testing::HasSubstr("no way"));
    window.questions->close();
    loop.drain();
}

/// A window that remembers, on the settings of the fixture.
class SessionTest : public MainWindowControllerTest {
protected:
    ~SessionTest() override
    {
        for (auto const &request : connections.waiting)
            request.answer->fail(std::make_exception_ptr(Cancelled()));
        loop.drain();
    }

    /// Another run of the program.
    std::unique_ptr<MainWindowController> run(PaneSpec::Sides const &sides = {})
    {
        auto memory = std::make_shared<SessionMemory>(
            SessionMemory::Collaborators{.mainContext = loop.context(), .clock = clock, .defaults = defaults});
        auto next = std::make_unique<MainWindowController>(
            PaneController::Collaborators{loop.context(), clock, defaults}, connections, memory);
        next->start(sides);
        answerAll();
        return next;
    }

    void answerAll()
    {
        loop.drain();
        while (!provider->waiting.empty()) {
            auto const request = provider->takeOldest();
            request.answer->succeed(
                {{request.path, listing(request.path, {file("a"), file("b"), file("c")}, clock->now())}});
            loop.drain();
        }
    }

    void end(std::unique_ptr<MainWindowController> &ending)
    {
        ending->rememberAll();
        ending.reset();
        loop.drain();
    }
};

TEST_F(SessionTest, bothSidesComeBackWithTheirTabs)
{
    auto first = run();
    first->pane(PaneSide::left)->navigate("/usr");
    answerAll();
    first->cmdNewTab();
    first->pane(PaneSide::left)->navigate("/etc");
    answerAll();
    first->setActive(PaneSide::right);
    end(first);

    auto const second = run();
    EXPECT_EQ(second->container(PaneSide::left).tabCount(), 2U);
    EXPECT_EQ(second->pane(PaneSide::left)->pathOnShow(), "/etc");
    EXPECT_EQ(second->activeSide(), PaneSide::right);
    second->container(PaneSide::left).select(0);
    answerAll();
    EXPECT_EQ(second->pane(PaneSide::left)->pathOnShow(), "/usr");
}

TEST_F(SessionTest, theCursorOfTheLastPlaceComesBack)
{
    auto first = run({.left = PaneSpec{"local", "/usr", true}, .right = PaneSpec{"local", "/usr", true}});
    first->pane(PaneSide::left)->rowClicked(2);
    end(first);
    auto const second = run();
    EXPECT_EQ(second->pane(PaneSide::left)->cursorName(), "b");
}

TEST_F(SessionTest, theCommandLineGoesBeforeWhatIsRemembered)
{
    auto first = run({.left = PaneSpec{"local", "/usr", true}, .right = PaneSpec{"local", "/etc", true}});
    first->cmdNewTab();
    answerAll();
    end(first);
    auto const second = run({.left = PaneSpec{"local", "/opt", true}, .right = {}});
    EXPECT_EQ(second->container(PaneSide::left).tabCount(), 1U);
    EXPECT_EQ(second->pane(PaneSide::left)->pathOnShow(), "/opt");
    EXPECT_EQ(second->pane(PaneSide::right)->pathOnShow(), "/etc");
}

TEST_F(SessionTest, aHostIsOpenedWhereItWasLeftUnlessAPathIsAskedFor)
{
    defaults.setText("tw.locations", R"({"web":{"path":"/srv/log","cursor":"c"}})");
    auto const window = run();
    window->open({.connection = "web", .path = "/"}, window->pane(PaneSide::left));
    connections.waiting.at(0).answer->succeed(browser);
    answerAll();
    EXPECT_EQ(window->pane(PaneSide::left)->pathOnShow(), "/srv/log");
    EXPECT_EQ(window->pane(PaneSide::left)->cursorName(), "c");
    window->open({.connection = "web", .path = "/etc", .pathWasExplicit = true}, window->pane(PaneSide::left));
    connections.waiting.at(1).answer->succeed(browser);
    answerAll();
    EXPECT_EQ(window->pane(PaneSide::left)->pathOnShow(), "/etc");
}

TEST_F(SessionTest, aRememberedPlaceThatIsGoneIsNotOfferedAgain)
{
    defaults.setText("tw.locations", R"({"web":{"path":"/gone"}})");
    auto const window = run();
    auto const open = [&] {
        window->open({.connection = "web", .path = "/"}, window->pane(PaneSide::left));
        connections.waiting.back().answer->succeed(browser);
        loop.drain();
    };
    open();
    provider->takeOldest().answer->fail(std::make_exception_ptr(LocalProviderError::CannotOpen("/gone", ENOENT)));
    loop.drain();
    open();
    answerAll();
    EXPECT_EQ(window->pane(PaneSide::left)->pathOnShow(), "/");
}

TEST_F(SessionTest, settingsThatCannotBeReadAreAFirstStart)
{
    defaults.setText("tw.sides", "{{{");
    defaults.setText("tw.locations", "[1]");
    auto window = run();
    EXPECT_EQ(window->pane(PaneSide::left)->pathOnShow(), PaneSpec::localHome().path);
    end(window);
    EXPECT_EQ(defaults.text("tw.sides.broken"), "{{{");
}

TEST_F(MainWindowControllerTest, commandsActOnTheActivePane)
{
    start({});
    controller.setActive(PaneSide::right);
    auto const fetches = provider->fetches;
    controller.cmdRefresh();
    loop.drain();
    EXPECT_EQ(provider->fetches, fetches + 1);
    controller.cmdToggleHidden();
    EXPECT_TRUE(controller.pane(PaneSide::right)->model().viewOptions().showHidden);
    EXPECT_FALSE(controller.pane(PaneSide::left)->model().viewOptions().showHidden);
}

TEST_F(MainWindowControllerTest, commandsOfTheWindowReachIt)
{
    controller.cmdEqualizePanes();
    controller.cmdCloseTab();
    EXPECT_EQ(window.equalized, 1);
    EXPECT_EQ(window.closed, 1);
}

TEST_F(MainWindowControllerTest, bothFoldersOnShowAreReadWhenTheProgramComesToTheFrontAndAutoRefreshIsOn)
{
    provider->answersAtOnce = [this](std::string const &path) {
        return Listings{{path, listing(path, {file("a")}, clock->now())}};
    };
    start({PaneSpec{"local", "/left", true}, PaneSpec{"local", "/right", true}});
    provider->answersAtOnce = nullptr;
    defaults.setText("TWAutoRefresh", "false");
    controller.checkForChanges();
    loop.drain();
    EXPECT_TRUE(provider->waiting.empty());
    defaults.setText("TWAutoRefresh", "true");
    controller.checkForChanges();
    loop.drain();
    std::vector<std::string> asked;
    while (!provider->waiting.empty()) {
        auto const request = provider->takeOldest();
        asked.push_back(request.path);
        request.answer->succeed({{request.path, listing(request.path, {file("a")}, clock->now())}});
        loop.drain();
    }
    EXPECT_THAT(asked, testing::UnorderedElementsAre("/left", "/right"));
}

TEST_F(MainWindowControllerTest, autoRefreshIsTurnedOffAndOnAndTheStatusLineSaysSo)
{
    start({PaneSpec{"local", "/left", true}, PaneSpec{"local", "/right", true}});
    controller.cmdToggleAutoRefresh();
    EXPECT_FALSE(controller.refreshesItself());
    EXPECT_EQ(left.status, "auto refresh off — ⌘R to reload");
    controller.cmdToggleAutoRefresh();
    EXPECT_TRUE(controller.refreshesItself());
    EXPECT_EQ(left.status, "folders refresh themselves");
}

} // namespace
} // namespace tw::test
