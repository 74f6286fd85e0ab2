#include "TWEngine/Runtime/SystemClock.h"

#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Runtime/IoThread.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <latch>
#include <thread>

namespace tw::test {
namespace {

using std::chrono::hours;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr int clockRaces = 300;

class SystemClockTest : public ::testing::Test {
protected:
    IoThread io;
    SystemClock clock{io};
    TestLoop loop;
};

TEST_F(SystemClockTest, aSleepEndsNotBeforeItsTime)
{
    auto const begin = clock.steadyNow();
    loop.run(clock.sleep(milliseconds(2)));
    EXPECT_GE(clock.steadyNow() - begin, milliseconds(2));
}

TEST_F(SystemClockTest, aSleepOfNothingEndsAtOnce)
{
    auto const none = loop.start(clock.sleep(nanoseconds(0)));
    auto const negative = loop.start(clock.sleep(nanoseconds(-5)));
    loop.drain();

    EXPECT_TRUE(none.isDone());
    EXPECT_TRUE(negative.isDone());
}

TEST_F(SystemClockTest, aSleepIsMeasuredFromWhenItIsAwaited)
{
    auto sleep = clock.sleep(milliseconds(2));
    loop.run(clock.sleep(milliseconds(4)));
    auto const begin = clock.steadyNow();
    loop.run(std::move(sleep));

    EXPECT_GE(clock.steadyNow() - begin, milliseconds(2));
}

TEST_F(SystemClockTest, aSleepThatIsStoppedEndsCancelled)
{
    auto const sleep = loop.start(clock.sleep(hours(1)));
    loop.drain();
    EXPECT_FALSE(sleep.isDone());
    sleep.stop();
    loop.drain();

    EXPECT_THROW(sleep.value(), Cancelled);
}

TEST_F(SystemClockTest, aSleepThatWasStoppedBeforeItIsAwaitedEndsCancelled)
{
    auto const sleep = loop.start(clock.sleep(hours(1)));
    sleep.stop();
    loop.drain();

    EXPECT_THROW(sleep.value(), Cancelled);
}

TEST_F(SystemClockTest, theLongestSleepIsNotAPastOne)
{
    auto const sleep = loop.start(clock.sleep(nanoseconds::max()));
    loop.run(clock.sleep(milliseconds(1)));
    EXPECT_FALSE(sleep.isDone());

    sleep.stop();
    loop.drain();
    EXPECT_THROW(sleep.value(), Cancelled);
}

TEST_F(SystemClockTest, timeGoesForward)
{
    auto const before = clock.steadyNow();
    EXPECT_LE(before, clock.steadyNow());
    EXPECT_GT(clock.now(), Timestamp{});
}

TEST_F(SystemClockTest, aStopAtTheMomentOfItsEndEndsASleepOnce)
{
    for (int round = 0; round < clockRaces; ++round) {
        auto const sleep = loop.start(clock.sleep(microseconds(50)));
        std::latch ready(2);
        std::jthread const stopper([&] {
            ready.arrive_and_wait();
            sleep.stop();
        });
        ready.arrive_and_wait();
        ASSERT_TRUE(loop.runUntil([&] { return sleep.isDone(); }));
        if (sleep.failed())
            EXPECT_THROW(sleep.value(), Cancelled);
        else
            EXPECT_NO_THROW(sleep.value());
    }
}

} // namespace
} // namespace tw::test
