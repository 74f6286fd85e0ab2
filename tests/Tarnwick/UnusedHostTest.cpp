#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Connections/ConnectionRegistry.h"
#include "tests/hosts/StandInSSH.h"
#include "tests/support/ChildProcessTest.h"
#include "tests/support/FakeLoginDesk.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

namespace tw::test {
namespace {

using testing::SizeIs;
using std::chrono_literals::operator""min;
using std::chrono_literals::operator""h;
using namespace std::chrono_literals;

/// A host that somebody has used, with a listing of its folder in memory.
class UnusedHostTest : public testing::Test {
protected:
    UnusedHostTest()
    {
        folder.file("a file");
        folder.folder("below");
        used = loop.run(registry->ssh("host"));
        known = used.get();
        provider = std::dynamic_pointer_cast<SSHProvider>(used->providerRef());
        loop.run(used->open(folder.path()));
    }

    ~UnusedHostTest() override
    {
        used.reset();
        loop.run(registry->shutdownAll());
        registry.reset();
        // A disconnect that nobody waits for goes on after the host is down.
        loop.runUntil([&] { return provider.use_count() == 1; });
        provider.reset();
        while (childrenOfOurs() != childrenBefore)
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
    }

    void letGo()
    {
        used.reset();
        loop.drain();
    }

    void pass(std::chrono::duration<double> time)
    {
        clock->advance(time);
        loop.drain();
    }

    bool isConnected() { return loop.run(provider->isLive()); }

    std::set<pid_t> const childrenBefore = childrenOfOurs();
    EngineRuntime engine;
    TestLoop loop;
    StandInSSH standIn;
    TemporaryFolder sockets;
    TemporaryFolder folder;
    TemporaryFolder ssh;
    std::shared_ptr<FakeLoginDesk> desk = std::make_shared<FakeLoginDesk>();
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::unique_ptr<ConnectionRegistry> registry = std::make_unique<ConnectionRegistry>(
        ConnectionRegistry::Collaborators{.engine = engine,
                                          .mainContext = loop.context(),
                                          .sshProgram = standIn.program(),
                                          .sockets = {.base = sockets.path(), .user = ::getuid()},
                                          .logins = desk,
                                          .sshConfig = ssh.path("config"),
                                          .clock = clock});
    std::shared_ptr<Browser> used;
    Browser *known = nullptr;
    std::shared_ptr<SSHProvider> provider;
};

TEST_F(UnusedHostTest, itsClientsEndAfterTenMinutesAndItsListingsStay)
{
    letGo();
    pass(10min - 1s);
    EXPECT_TRUE(isConnected());
    pass(1s);
    loop.runUntil([&] { return !isConnected(); });

    used = loop.run(registry->ssh("host"));
    EXPECT_EQ(used.get(), known);
    EXPECT_TRUE(loop.run(used->cached(folder.path())));
    EXPECT_FALSE(isConnected());
}

TEST_F(UnusedHostTest, aHostThatAskedTheUserStaysConnected)
{
    desk->asksAtOnce = true;
    loop.run(provider->disconnect());
    loop.run(provider->logIn());
    letGo();
    pass(10min);
    EXPECT_FALSE(loop.run(provider->logsInByItself())); // behind the same question of the registry
    loop.drain();
    EXPECT_TRUE(isConnected()) << "the next use would ask the user again";
}

TEST_F(UnusedHostTest, theNextQuestionConnectsAgain)
{
    auto const before = standIn.starts().size();
    letGo();
    pass(10min);
    loop.runUntil([&] { return !isConnected(); });
    used = loop.run(registry->ssh("host"));
    EXPECT_EQ(loop.run(used->open("/")).wasCold, true);
    EXPECT_TRUE(isConnected());
    EXPECT_GT(standIn.starts().size(), before);
}

TEST_F(UnusedHostTest, whoHoldsItUsesIt)
{
    auto other = used;
    letGo();
    pass(1h);
    EXPECT_TRUE(isConnected());
    other.reset();
    loop.drain();
    pass(10min);
    loop.runUntil([&] { return !isConnected(); });
}

TEST_F(UnusedHostTest, whoComesBackInTimeStopsTheWaiting)
{
    letGo();
    pass(9min);
    used = loop.run(registry->reach("host"));
    pass(9min);
    EXPECT_TRUE(isConnected());
    letGo();
    pass(9min);
    EXPECT_TRUE(isConnected()) << "the time begins anew";
}

TEST_F(UnusedHostTest, aHostThatComesUpForNobodyIsUnused)
{
    auto const other = std::dynamic_pointer_cast<SSHProvider>(loop.run(registry->reach("other"))->providerRef());
    loop.runUntil([&] { return loop.run(other->isLive()); });
    loop.runUntil([&] {
        pass(10min);
        return !loop.run(other->isLive());
    });
    EXPECT_TRUE(isConnected());
}

TEST_F(UnusedHostTest, theRegistryMayGoBeforeTheTimeIsUp)
{
    letGo();
    loop.run(registry->shutdownAll());
    registry = std::make_unique<ConnectionRegistry>(
        ConnectionRegistry::Collaborators{.engine = engine, .mainContext = loop.context()});
    pass(10min);
    EXPECT_FALSE(isConnected());
}

} // namespace
} // namespace tw::test
