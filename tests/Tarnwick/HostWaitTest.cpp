#include "Tarnwick/Panes/HostWait.h"

#include "tests/support/FakeHost.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Phase = HostStatus::Phase;

/// A wait for a host whose status the test sets, by a clock that the test moves.
class HostWaitTest : public ::testing::Test {
protected:
    ~HostWaitTest() override
    {
        wait.reset();
        loop.drain();
        pass(seconds(2)); // the timers that were stopped
    }

    void begin(std::shared_ptr<FileSystemProvider> const &provider)
    {
        wait = std::make_unique<HostWait>(loop.context(), clock, provider, [this] { ++changes; });
        loop.drain();
    }

    void become(Phase phase, milliseconds ago = {})
    {
        host->become({phase, clock->steadyNow() - ago});
        loop.drain();
    }

    void pass(milliseconds time)
    {
        clock->advance(time);
        loop.drain();
    }

    /// The seconds that a person reads, or -1 without news.
    long sofar() const
    {
        auto const news = wait->news();
        return news ? news->soFar.count() : -1;
    }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<FakeHost> host = std::make_shared<FakeHost>();
    int changes = 0;
    std::unique_ptr<HostWait> wait;
};

TEST_F(HostWaitTest, aShortWaitHasNoNews)
{
    become(Phase::reaching);
    begin(host);
    pass(HostWait::patience - milliseconds(1));
    EXPECT_EQ(sofar(), -1);
    pass(milliseconds(1));
    EXPECT_NE(sofar(), -1);
    EXPECT_EQ(wait->news()->phase, Phase::reaching);
}

TEST_F(HostWaitTest, theSecondsOfAPhaseCountUp)
{
    become(Phase::waitingForShell);
    begin(host);
    pass(milliseconds(2000));
    EXPECT_EQ(sofar(), 2);
    auto const before = changes;
    pass(milliseconds(1000));
    EXPECT_EQ(sofar(), 3);
    EXPECT_EQ(changes, before + 1);
    become(Phase::up);
    EXPECT_EQ(sofar(), -1);
}

TEST_F(HostWaitTest, theCountChangesOnWholeSecondsOfThePhase)
{
    become(Phase::reaching);
    begin(host);
    pass(HostWait::patience);
    become(Phase::loggingIn, milliseconds(700));
    auto const before = changes;
    pass(milliseconds(299));
    EXPECT_EQ(sofar(), 0);
    pass(milliseconds(1));
    EXPECT_EQ(sofar(), 1);
    EXPECT_GT(changes, before);
}

TEST_F(HostWaitTest, aSilentHostIsNewsAtOnce)
{
    become(Phase::up);
    begin(host);
    EXPECT_EQ(sofar(), -1);
    become(Phase::silent, milliseconds(5000));
    EXPECT_EQ(sofar(), 5);
    pass(milliseconds(2000));
    EXPECT_EQ(sofar(), 7);
}

TEST_F(HostWaitTest, nothingTicksWhileThereIsNothingToSay)
{
    become(Phase::up);
    begin(host);
    pass(HostWait::patience);
    auto const before = changes;
    for (int second = 0; second < 10; ++second)
        pass(seconds(1));
    EXPECT_EQ(changes, before);
}

TEST_F(HostWaitTest, aHostThatIsHeardAgainHasNoNewsAndTicksNoMore)
{
    become(Phase::silent, milliseconds(5000));
    begin(host);
    EXPECT_EQ(sofar(), 5);
    become(Phase::up);
    EXPECT_EQ(sofar(), -1);
    pass(seconds(1)); // the tick that was on its way
    auto const before = changes;
    pass(seconds(5));
    EXPECT_EQ(changes, before);
}

TEST_F(HostWaitTest, anEndedWaitReadsNoStatusAndCallsNothing)
{
    become(Phase::silent);
    begin(host);
    EXPECT_EQ(host->statusReaders, 1);
    wait.reset();
    auto const before = changes;
    loop.drain();
    become(Phase::silent);
    pass(seconds(3));
    EXPECT_EQ(host->statusReaders, 0);
    EXPECT_EQ(changes, before);
}

TEST_F(HostWaitTest, aProviderWithoutAHostHasNoNews)
{
    begin(std::make_shared<ScriptedProvider>());
    pass(seconds(5));
    EXPECT_EQ(sofar(), -1);
    EXPECT_EQ(changes, 0);
}

} // namespace
} // namespace tw::test
