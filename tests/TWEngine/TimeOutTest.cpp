#include "TWEngine/Runtime/TimeOut.h"

#include "TWEngine/Runtime/IoThread.h"
#include "TWEngine/Runtime/SystemClock.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <latch>
#include <stdexcept>
#include <thread>

namespace tw::test {
namespace {

using std::chrono::seconds;

constexpr int timeOutRaces = 300;

/// Time stands still, and everything lives on the test's own loop.
class TimeOutTest : public ::testing::Test {
protected:
    using Answer = Completion<int>;

    Started<int> startLimited()
    {
        auto started = loop.start(withTimeOut(clock, seconds(10), Answer::wait(answer)));
        loop.drain();
        return started;
    }

    void advance(double by)
    {
        clock->advance(std::chrono::duration<double>(by));
        loop.drain();
    }

    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<Answer> answer = std::make_shared<Answer>();
    TestLoop loop;
};

/// Ends well although it is stopped, as an operation does that was at its end already.
Task<int> insist(std::shared_ptr<Completion<int>> never)
{
    try {
        co_await Completion<int>::wait(never);
    } catch (Cancelled const &) {
    }
    co_return 7;
}

Task<int> failWhenStopped(std::shared_ptr<Completion<int>> never)
{
    try {
        co_await Completion<int>::wait(never);
    } catch (Cancelled const &) {
    }
    throw std::runtime_error("broke while stopping");
}

Task<void> endAtOnce()
{
    co_return;
}

TEST_F(TimeOutTest, aResultInTimeIsAnswered)
{
    auto const limited = startLimited();
    advance(9.9);
    answer->succeed(7);
    loop.drain();

    EXPECT_EQ(limited.value(), 7);
}

TEST_F(TimeOutTest, aFailureInTimeIsThrown)
{
    auto const limited = startLimited();
    answer->fail(std::make_exception_ptr(std::runtime_error("no")));
    loop.drain();

    EXPECT_THROW(limited.value(), std::runtime_error);
}

TEST_F(TimeOutTest, workThatIsNotDoneInTimeIsStopped)
{
    auto const limited = startLimited();
    advance(9.9);
    EXPECT_FALSE(limited.isDone());
    advance(0.2);

    EXPECT_THROW(limited.value(), TimedOut);
    EXPECT_FALSE(answer->succeed(7)) << "the work itself was stopped";
}

TEST_F(TimeOutTest, theLimitIsMeasuredFromWhenItIsAwaited)
{
    auto limited = withTimeOut(clock, seconds(10), Answer::wait(answer));
    advance(20);
    auto const started = loop.start(std::move(limited));
    loop.drain();
    EXPECT_FALSE(started.isDone());

    answer->succeed(7);
    loop.drain();
    EXPECT_EQ(started.value(), 7);
}

TEST_F(TimeOutTest, aStopOfTheCallerArrivesAsCancelled)
{
    auto const limited = startLimited();
    limited.stop();
    loop.drain();

    EXPECT_THROW(limited.value(), Cancelled);
    EXPECT_FALSE(answer->succeed(7)) << "the work itself was stopped";
}

TEST_F(TimeOutTest, aCallerThatWasStoppedBeforeItAwaitsIsCancelled)
{
    auto const limited = loop.start(withTimeOut(clock, seconds(10), Answer::wait(answer)));
    limited.stop();
    loop.drain();

    EXPECT_THROW(limited.value(), Cancelled);
}

TEST_F(TimeOutTest, aResultThatStillCameIsNotThrownAway)
{
    auto const limited = loop.start(withTimeOut(clock, seconds(10), insist(answer)));
    loop.drain();
    advance(11);

    EXPECT_EQ(limited.value(), 7);
}

TEST_F(TimeOutTest, aFailureOfTheStoppedWorkTravelsAsItIs)
{
    auto const limited = loop.start(withTimeOut(clock, seconds(10), failWhenStopped(answer)));
    loop.drain();
    advance(11);

    EXPECT_THROW(limited.value(), std::runtime_error);
}

TEST_F(TimeOutTest, workWithoutAResultMayBeLimitedToo)
{
    auto const limited = loop.start(withTimeOut(clock, seconds(10), endAtOnce()));
    loop.drain();
    EXPECT_NO_THROW(limited.value());
}

TEST_F(TimeOutTest, workThatEndsAtOnceBeatsALimitOfNothing)
{
    answer->succeed(7);
    EXPECT_EQ(loop.run(withTimeOut(clock, seconds(0), Answer::wait(answer))), 7);
}

TEST_F(TimeOutTest, nothingIsLeftBehindWhenItEnds)
{
    auto const limited = startLimited();
    answer->succeed(7);
    loop.runUntil([&] { return limited.isDone(); });

    EXPECT_EQ(clock.use_count(), 1);
    EXPECT_EQ(loop.context()->runPending(), 0U);
}

TEST_F(TimeOutTest, aResultAStopAndTheTimeMayRace)
{
    IoThread io;
    auto const machine = std::make_shared<SystemClock>(io);
    for (int round = 0; round < timeOutRaces; ++round) {
        auto const raced = std::make_shared<Answer>();
        auto const limited = loop.start(
            withTimeOut(std::shared_ptr<Clock>(machine), std::chrono::microseconds(50), Answer::wait(raced)));
        {
            std::latch ready(3);
            std::jthread const result([&] {
                ready.arrive_and_wait();
                raced->succeed(7);
            });
            std::jthread const stopper([&] {
                ready.arrive_and_wait();
                limited.stop();
            });
            ready.arrive_and_wait();
            ASSERT_TRUE(loop.runUntil([&] { return limited.isDone(); }));
        }
        try {
            EXPECT_EQ(limited.value(), 7);
        } catch (TimedOut const &) {
            EXPECT_FALSE(raced->succeed(8));
        } catch (Cancelled const &) {
            EXPECT_FALSE(raced->succeed(8));
        }
    }
    EXPECT_EQ(machine.use_count(), 1);
}

} // namespace
} // namespace tw::test
