#include "Tarnwick/Panes/HostArrival.h"

#include "tests/support/FakeConnections.h"
#include "tests/support/Listings.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingStore.h"
#include "tests/support/ScriptedProvider.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Stage = HostArrival::Stage;

/// The way to a host that comes up when the test says so.
class HostArrivalTest : public ::testing::Test {
protected:
    HostArrivalTest() { connections.browsers["web"] = browser; }

    ~HostArrivalTest() override
    {
        arrival.reset();
        for (auto const &request : connections.waiting)
            request.answer->fail(std::make_exception_ptr(std::runtime_error("over")));
        auto const ended = loop.start(browser->shutdown());
        loop.drain();
        EXPECT_TRUE(ended.isDone());
    }

    void setOut(PaneSpec destination, HostLogin login = HostLogin::silent)
    {
        arrival = std::make_shared<HostArrival>(
            std::move(destination),
            HostArrival::Events{
                .onKnown = [this] { ++known; },
                .onFolder = [this](std::shared_ptr<Browser> const &, std::string path) { folders.push_back(path); },
                .onEnd = [this] { ++ends; }});
        arrival->begin(loop.context(), connections, login);
        loop.drain();
    }

    void connect()
    {
        connections.waiting.at(0).answer->succeed(browser);
        loop.drain();
    }

    void refuse()
    {
        connections.waiting.at(0).answer->fail(std::make_exception_ptr(std::runtime_error("no way")));
        loop.drain();
    }

    static std::shared_ptr<ScriptedProvider> makeProvider()
    {
        auto made = std::make_shared<ScriptedProvider>();
        made->cacheIdentity = "ssh:web";
        return made;
    }

    void remember(std::string const &path)
    {
        store->rows.insert_or_assign({"ssh:web", path}, listing(path, {file("old")}, clock->now()));
    }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<RecordingStore> store = std::make_shared<RecordingStore>();
    std::shared_ptr<ScriptedProvider> provider = makeProvider();
    std::shared_ptr<Browser> browser = std::make_shared<Browser>(
        provider, Browser::Collaborators{Strand(loop.context()), clock, store}, Browser::Config{});
    FakeConnections connections{browser};
    std::vector<std::string> folders;
    int ends = 0;
    int known = 0;
    std::shared_ptr<HostArrival> arrival;
};

TEST_F(HostArrivalTest, aFolderThatNothingIsKnownOfIsGoneToWhenTheHostIsUp)
{
    setOut({"web", "/srv", true});
    EXPECT_EQ(arrival->stage(), Stage::connecting);
    EXPECT_TRUE(arrival->isAwaited());
    EXPECT_THAT(folders, IsEmpty());
    connect();
    EXPECT_THAT(folders, ElementsAre("/srv"));
    EXPECT_FALSE(arrival->isAwaited());
    EXPECT_EQ(ends, 0) << "the folder is the end";
}

TEST_F(HostArrivalTest, aRememberedFolderIsGoneToAtOnceAndOnlyOnce)
{
    remember("/srv");
    setOut({"web", "/srv", true});
    EXPECT_THAT(folders, ElementsAre("/srv"));
    EXPECT_TRUE(arrival->isOpeningFolder());
    arrival->folderArrived();
    EXPECT_EQ(arrival->stage(), Stage::onFolder);
    EXPECT_TRUE(arrival->isAwaited());
    connect();
    EXPECT_THAT(folders, ElementsAre("/srv"));
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(arrival->failure(), nullptr);
    EXPECT_FALSE(arrival->isAwaited());
}

TEST_F(HostArrivalTest, withoutAPathNoRememberedFolderIsShown)
{
    remember("/");
    setOut({"web", "/", false});
    EXPECT_THAT(folders, IsEmpty());
    connect();
    EXPECT_THAT(folders, ElementsAre("/"));
}

TEST_F(HostArrivalTest, aRefusalEndsItWithTheReason)
{
    setOut({"web", "/srv", true});
    refuse();
    EXPECT_EQ(ends, 1);
    EXPECT_NE(arrival->failure(), nullptr);
    EXPECT_TRUE(arrival->isOver());
    EXPECT_THAT(folders, IsEmpty());
}

TEST_F(HostArrivalTest, oneWhoHasGoneOnIsNotPulledToTheFolder)
{
    setOut({"web", "/srv", true});
    arrival->userWentOn();
    EXPECT_FALSE(arrival->isAwaited());
    connect();
    EXPECT_THAT(folders, IsEmpty());
    EXPECT_EQ(ends, 1);
}

TEST_F(HostArrivalTest, aWayThatNobodyIsOnAnyMoreHasNoEffect)
{
    remember("/srv");
    setOut({"web", "/other", true});
    std::weak_ptr<HostArrival> const gone = arrival;
    arrival.reset();
    EXPECT_TRUE(gone.expired());
    connect();
    EXPECT_THAT(folders, IsEmpty());
    EXPECT_EQ(ends, 0);
}

TEST_F(HostArrivalTest, aWayThatNobodyIsOnAnyMoreStopsItsWaitForTheHost)
{
    setOut({"web", "/srv", true});
    EXPECT_FALSE(connections.waiting.at(0).hasCallerGone());
    arrival.reset();
    loop.drain();
    EXPECT_TRUE(connections.waiting.at(0).hasCallerGone());
}

TEST_F(HostArrivalTest, theBrowserIsKnownBeforeTheHostIsUp)
{
    setOut({"web", "/srv", true});
    EXPECT_EQ(known, 1);
    EXPECT_EQ(arrival->browser(), browser);
}

TEST_F(HostArrivalTest, aLoginAsksTheUserInTheOnlyAttempt)
{
    setOut({"web", "/srv", true}, HostLogin::withQuestions);
    ASSERT_EQ(connections.waiting.size(), 1U);
    EXPECT_TRUE(connections.waiting.at(0).mayAsk);
    connect();
    EXPECT_THAT(folders, ElementsAre("/srv"));
}

TEST_F(HostArrivalTest, theBrowserAndTheConnectionAreOneAttempt)
{
    setOut({"web", "/srv", true});
    refuse();
    EXPECT_EQ(connections.waiting.size(), 1U);
}

} // namespace
} // namespace tw::test
