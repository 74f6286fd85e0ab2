#include "Tarnwick/Connections/ConnectionRegistry.h"

#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Panes/PaneController.h"
#include "tests/hosts/StandInSSH.h"
#include "tests/support/ChildProcessTest.h"
#include "tests/support/RecordingDisplay.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include <unistd.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Fault = StandInSSH::Fault;

class ConnectionRegistryTest : public testing::Test {
protected:
    ~ConnectionRegistryTest() override
    {
        if (registry)
            loop.run(registry->shutdownAll());
        registry.reset();
        while (childrenOfOurs() != childrenBefore)
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
    }

    /// How many attempts to connect there were: each begins with a session that asks what the host speaks. Other
    /// sessions come up when they are needed.
    std::ptrdiff_t attempts()
    {
        return std::ranges::count(standIn.starts(), firstRemoteCommand(),
                                  [](auto const &start) { return start.back(); });
    }

    void listRootOf(std::shared_ptr<Browser> const &browser)
    {
        EXPECT_GT(loop.run(browser->open("/")).snapshot.count(), 0U);
    }

    std::unique_ptr<ConnectionRegistry> makeRegistry()
    {
        return std::make_unique<ConnectionRegistry>(
            ConnectionRegistry::Collaborators{.engine = engine,
                                              .mainContext = loop.context(),
                                              .sshProgram = standIn.program(),
                                              .sockets = {.base = sockets.path(), .user = ::getuid()},
                                              .cacheDirectory = caches.path("listings"),
                                              .sshConfig = ssh.path("config")});
    }

    /// As at the next start of the program.
    void restart()
    {
        loop.run(registry->shutdownAll());
        registry = makeRegistry();
    }

    std::set<pid_t> const childrenBefore = childrenOfOurs();
    EngineRuntime engine;
    TestLoop loop;
    StandInSSH standIn;
    TemporaryFolder sockets;
    TemporaryFolder caches;
    TemporaryFolder folder; ///< of the host, which is this machine
    TemporaryFolder ssh;    ///< of the user's files for ssh
    std::unique_ptr<ConnectionRegistry> registry = makeRegistry();
};

TEST_F(ConnectionRegistryTest, thisMachineHasOneBrowser)
{
    auto const browser = registry->local();
    EXPECT_EQ(registry->local(), browser);
    EXPECT_EQ(browser->providerRef()->persistentCacheIdentity(), std::nullopt);
    listRootOf(browser);
    EXPECT_THAT(standIn.starts(), IsEmpty());
}

TEST_F(ConnectionRegistryTest, theSavedHostsAreReadEachTime)
{
    EXPECT_THAT(loop.run(registry->hosts()), IsEmpty());
    ssh.file("config", "Host web\nHost mail\n");
    EXPECT_THAT(loop.run(registry->hosts()), ElementsAre("web", "mail"));
    ssh.file("config", "Host other\n");
    EXPECT_THAT(loop.run(registry->hosts()), ElementsAre("other"));
}

TEST_F(ConnectionRegistryTest, whoAsksForTheHostsWhileTheyAreReadSharesTheReading)
{
    ssh.file("config", "Host web\n");
    auto const first = loop.start(registry->hosts());
    auto const second = loop.start(registry->hosts());
    loop.runUntil([&] { return first.isDone() && second.isDone(); });
    EXPECT_THAT(first.value(), ElementsAre("web"));
    EXPECT_THAT(second.value(), ElementsAre("web"));
}

TEST_F(ConnectionRegistryTest, whoAsksForTheHostsBehindAChangeDoesNotGetWhatWasReadBeforeIt)
{
    ssh.file("config", "Host web\n");
    auto const first = loop.start(registry->hosts());
    loop.drain();
    engine.workers().waitUntilIdle(); // read, but nobody has heard of it
    ssh.file("config", "Host other\n");
    auto const second = loop.start(registry->hosts());
    auto const third = loop.start(registry->hosts());
    loop.runUntil([&] { return first.isDone() && second.isDone() && third.isDone(); });
    EXPECT_THAT(first.value(), ElementsAre("web"));
    EXPECT_THAT(second.value(), ElementsAre("other"));
    EXPECT_THAT(third.value(), ElementsAre("other"));
}

TEST_F(ConnectionRegistryTest, aHostHasOneBrowser)
{
    auto const browser = loop.run(registry->ssh("host"));
    EXPECT_EQ(browser->providerRef()->identifier(), "ssh:host");
    listRootOf(browser);
    EXPECT_EQ(loop.run(registry->ssh("host")), browser);
    EXPECT_EQ(attempts(), 1);
    EXPECT_NE(registry->local(), browser);
}

TEST_F(ConnectionRegistryTest, aTildeTypedInAPaneOnAHostIsTheHomeFolderThere)
{
    auto const browser = loop.run(registry->ssh("host"));
    MemoryDefaults defaults;
    RecordingDisplay display;
    auto pane = PaneController::create({.mainContext = loop.context(), .clock = engine.clock(), .defaults = defaults},
                                       browser, "host");
    pane->attach(display);
    auto const home = loop.run(std::dynamic_pointer_cast<SSHProvider>(browser->providerRef())->defaultDirectory());
    pane->goToTyped(" ~/.. ");
    auto const wanted = std::filesystem::path(home).parent_path().string();
    loop.runUntil([&] { return pane->model().snapshot() && pane->pathOnShow() == wanted; });
    pane.reset();
}

TEST_F(ConnectionRegistryTest, theSameMachineUnderTwoNamesHasTwo)
{
    EXPECT_NE(loop.run(registry->ssh("one")), loop.run(registry->ssh("two")));
    EXPECT_NE(loop.run(registry->ssh("local")), registry->local());
}

TEST_F(ConnectionRegistryTest, twoWhoAskAtOnceShareOneAttempt)
{
    auto const first = loop.start(registry->ssh("host"));
    auto const second = loop.start(registry->ssh("host"));
    loop.runUntil([&] { return first.isDone() && second.isDone(); });
    EXPECT_EQ(first.value(), second.value());
    listRootOf(first.value());
    loop.run(registry->shutdownAll());
    EXPECT_EQ(attempts(), 1);
}

TEST_F(ConnectionRegistryTest, aFailureReachesBothAndIsNotKept)
{
    standIn.behave({.fault = Fault::refuse, .message = "Permission denied"});
    auto const first = loop.start(registry->ssh("host"));
    auto const second = loop.start(registry->ssh("host"));
    loop.runUntil([&] { return first.isDone() && second.isDone(); });
    for (auto const &asked : {first, second}) {
        try {
            asked.value();
            FAIL() << "the host refuses";
        } catch (RemoteShellError::ConnectFailed const &failure) {
            EXPECT_EQ(failure.detail, "Permission denied");
        }
    }
    EXPECT_THAT(standIn.starts(), SizeIs(1));

    standIn.behave({});
    listRootOf(loop.run(registry->ssh("host")));
    EXPECT_EQ(attempts(), 2) << "the host is asked anew";
}

TEST_F(ConnectionRegistryTest, theOthersGetTheHostIfTheFirstStopsAsking)
{
    auto const first = loop.start(registry->ssh("host"));
    auto const second = loop.start(registry->ssh("host"));
    loop.drain();
    first.stop();
    loop.runUntil([&] { return second.isDone(); });
    listRootOf(second.value());
}

TEST_F(ConnectionRegistryTest, whoWaitsForTheSameHostMayLeave)
{
    auto const first = loop.start(registry->ssh("host"));
    auto const second = loop.start(registry->ssh("host"));
    loop.drain();
    second.stop();
    loop.runUntil([&] { return first.isDone() && second.isDone(); });
    EXPECT_THROW(second.value(), Cancelled);
    EXPECT_EQ(loop.run(registry->ssh("host")), first.value());
}

TEST_F(ConnectionRegistryTest, shuttingDownEndsEveryConnection)
{
    auto const browser = loop.run(registry->ssh("host"));
    auto const local = registry->local();
    auto updates = loop.run(browser->updates());
    loop.run(registry->shutdownAll());
    EXPECT_EQ(loop.run(updates.next()), std::nullopt);
    auto const provider = std::dynamic_pointer_cast<SSHProvider>(browser->providerRef());
    EXPECT_FALSE(loop.run(provider->isLive()));
    loop.run(registry->shutdownAll());

    EXPECT_NE(loop.run(registry->ssh("host")), browser);
    EXPECT_NE(registry->local(), local);
}

TEST_F(ConnectionRegistryTest, attemptsAreGivenUpToTheLastOneWhoWaits)
{
    standIn.behave({.fault = Fault::stall});
    auto const first = loop.start(registry->ssh("host"));
    auto const second = loop.start(registry->ssh("host"));
    auto const other = loop.start(registry->ssh("other"));
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return standIn.starts().size() == 2;
    });
    loop.run(registry->giveUpAttempts());
    loop.drain();
    for (auto const &asked : {first, second, other})
        EXPECT_TRUE(asked.isDone() && asked.failed());
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return childrenOfOurs() == childrenBefore;
    });

    // The program is about to end.
    standIn.behave({});
    auto const late = loop.start(registry->ssh("host"));
    loop.drain();
    EXPECT_THROW(late.value(), Cancelled);
    EXPECT_THAT(standIn.starts(), SizeIs(2));
}

TEST_F(ConnectionRegistryTest, anAttemptThatNobodyWaitsForEndsItsClientAndTheNextCallerBeginsAnew)
{
    standIn.behave({.fault = Fault::stall});
    auto const first = loop.start(registry->ssh("host"));
    auto const second = loop.start(registry->ssh("host"));
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return attempts() == 1;
    });
    first.stop();
    second.stop();
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return first.isDone() && second.isDone() && childrenOfOurs() == childrenBefore;
    });
    EXPECT_THROW(first.value(), Cancelled);
    standIn.behave({});
    listRootOf(loop.run(registry->ssh("host")));
    EXPECT_EQ(attempts(), 2);
}

TEST_F(ConnectionRegistryTest, whoStillWaitsForTheStoreAtTheEndBeginsNothing)
{
    // Nothing has run yet, so the store is not open.
    auto const asked = loop.start(registry->ssh("host"));
    auto const ended = loop.start(registry->giveUpAttempts());
    loop.runUntil([&] { return asked.isDone() && ended.isDone(); });
    EXPECT_THROW(asked.value(), Cancelled);
    EXPECT_THAT(standIn.starts(), IsEmpty());
}

TEST_F(ConnectionRegistryTest, aHostOnItsWayUpIsTheSameBrowserForThoseWhoWaitAndThoseWhoDoNot)
{
    auto const early = loop.run(registry->reach("host"));
    EXPECT_EQ(loop.run(registry->reach("host")), early);
    EXPECT_EQ(loop.run(registry->ssh("host")), early);
    EXPECT_EQ(loop.run(registry->reach("host")), early);
    EXPECT_EQ(attempts(), 1);
}

TEST_F(ConnectionRegistryTest, whatIsAskedOfAHostOnItsWayUpWaitsForIt)
{
    listRootOf(loop.run(registry->reach("host")));
    EXPECT_EQ(attempts(), 1);
}

TEST_F(ConnectionRegistryTest, aFolderOfAHostIsKnownAtTheNextStartBeforeTheHostIsUp)
{
    folder.file("a file");
    auto const opened = loop.run(loop.run(registry->ssh("host"))->open(folder.path()));
    EXPECT_EQ(opened.snapshot.count(), 1U);
    restart();

    standIn.behave({.fault = Fault::stall});
    auto const early = loop.run(registry->reach("host"));
    auto const again = loop.run(early->open(folder.path()));
    EXPECT_TRUE(again.isStale);
    EXPECT_FALSE(again.wasCold);
    EXPECT_EQ(again.snapshot.count(), 1U);
    loop.run(registry->giveUpAttempts());
}

TEST_F(ConnectionRegistryTest, aHostThatWasOutOfReachComesUpInTheBrowserThatIsLookedAt)
{
    standIn.behave({.fault = Fault::refuse, .message = "no way"});
    auto const early = loop.run(registry->reach("host"));
    auto const refused = loop.start(registry->ssh("host"));
    loop.runUntil([&] { return refused.isDone(); });
    EXPECT_TRUE(refused.failed());

    standIn.behave({});
    EXPECT_EQ(loop.run(registry->ssh("host")), early) << "a host has one Browser, and this one is on screen";
    listRootOf(early);
    EXPECT_EQ(attempts(), 2) << "and the host is asked again what it speaks";
}

TEST_F(ConnectionRegistryTest, aBrowserThatIsLookedAtMendsItselfWhenTheHostIsBack)
{
    standIn.behave({.fault = Fault::refuse, .message = "no way"});
    auto const early = loop.run(registry->reach("host"));
    auto const refused = loop.start(registry->ssh("host"));
    loop.runUntil([&] { return refused.isDone(); });
    standIn.behave({});
    listRootOf(early);
    // It is the registry's to take down, although it came up by itself.
    loop.run(registry->shutdownAll());
    auto const provider = std::dynamic_pointer_cast<SSHProvider>(early->providerRef());
    EXPECT_FALSE(loop.run(provider->isLive()));
}

TEST_F(ConnectionRegistryTest, withoutAPlaceForItTheStoreIsNotMissed)
{
    loop.run(registry->shutdownAll());
    caches.file("a file");
    registry = std::make_unique<ConnectionRegistry>(
        ConnectionRegistry::Collaborators{.engine = engine,
                                          .mainContext = loop.context(),
                                          .sshProgram = standIn.program(),
                                          .sockets = {.base = sockets.path(), .user = ::getuid()},
                                          .cacheDirectory = caches.path("a file/listings")});
    listRootOf(loop.run(registry->ssh("host")));
}

TEST_F(ConnectionRegistryTest, itMayGoWhileSomebodyWaits)
{
    standIn.behave({.fault = Fault::stall});
    auto const asked = loop.start(registry->ssh("host"));
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return standIn.starts().size() == 1;
    });
    registry.reset();
    loop.runUntil([&] { return asked.isDone(); });
    EXPECT_TRUE(asked.failed());
    EXPECT_THAT(standIn.starts(), SizeIs(1));
}

} // namespace
} // namespace tw::test
