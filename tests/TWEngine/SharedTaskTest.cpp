#include "TWEngine/Runtime/SharedTask.h"

#include "TWEngine/Runtime/Strand.h"
#include "TWEngine/Runtime/WorkerPool.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <stdexcept>
#include <thread>

namespace tw::test {
namespace {

constexpr int taskRaces = 300;

/// Everything on one loop, so that each step is seen by itself; the races alone have threads.
class SharedTaskTest : public ::testing::Test {
protected:
    using Answer = Completion<int>;

    SharedTask<int> shareAnswer() { return SharedTask<int>::start(loop.context(), Answer::wait(answer)); }

    std::shared_ptr<Answer> answer = std::make_shared<Answer>();
    TestLoop loop;
};

Task<int> countRuns(std::shared_ptr<int> runs)
{
    co_return ++*runs;
}

Task<void> holdUntil(std::shared_ptr<Completion<Done>> end, std::shared_ptr<int> held)
{
    co_await Completion<Done>::wait(end);
    ++*held;
}

Task<long> othersHoldingAfter(SharedTask<void> task, std::shared_ptr<int> held)
{
    co_await task.wait();
    co_return held.use_count() - 1;
}

Task<bool> endsOn(SharedTask<int> task, Strand strand)
{
    co_await task.wait();
    co_return strand.runsHere();
}

TEST_F(SharedTaskTest, itRunsOnceForAllItsWaiters)
{
    auto const runs = std::make_shared<int>(0);
    auto const shared = SharedTask<int>::start(loop.context(), countRuns(runs));
    auto const first = loop.start(shared.wait());
    auto const second = loop.start(shared.wait());
    loop.drain();

    EXPECT_EQ(first.value(), 1);
    EXPECT_EQ(second.value(), 1);
    EXPECT_EQ(loop.run(shared.wait()), 1) << "a late waiter gets the same";
    EXPECT_EQ(*runs, 1);
}

TEST_F(SharedTaskTest, itStartsWithoutAWaiterAndOutlivesItsHandle)
{
    auto const runs = std::make_shared<int>(0);
    {
        auto const shared = SharedTask<int>::start(loop.context(), countRuns(runs));
        EXPECT_FALSE(shared.isDone());
        EXPECT_EQ(*runs, 0) << "nothing runs inside the call";
    }
    loop.drain();

    EXPECT_EQ(*runs, 1);
    EXPECT_EQ(runs.use_count(), 1);
}

TEST_F(SharedTaskTest, itIsDoneWhenItHasAnOutcome)
{
    auto const shared = shareAnswer();
    loop.drain();
    EXPECT_FALSE(shared.isDone());

    answer->succeed(7);
    loop.drain();
    EXPECT_TRUE(shared.isDone());
}

TEST_F(SharedTaskTest, aFailureReachesEveryWaiterNowAndLater)
{
    auto const shared = shareAnswer();
    auto const first = loop.start(shared.wait());
    auto const second = loop.start(shared.wait());
    loop.drain();
    answer->fail(std::make_exception_ptr(std::runtime_error("no")));
    loop.drain();

    EXPECT_THROW(first.value(), std::runtime_error);
    EXPECT_THROW(second.value(), std::runtime_error);
    EXPECT_THROW(loop.run(shared.wait()), std::runtime_error);
}

TEST_F(SharedTaskTest, aWaiterThatIsStoppedLeavesAloneAndTheOthersGoOn)
{
    auto const shared = shareAnswer();
    auto const leaving = loop.start(shared.wait());
    auto const staying = loop.start(shared.wait());
    loop.drain();
    leaving.stop();
    loop.drain();
    EXPECT_THROW(leaving.value(), Cancelled);
    EXPECT_FALSE(shared.isDone());

    answer->succeed(7);
    loop.drain();
    EXPECT_EQ(staying.value(), 7);
}

TEST_F(SharedTaskTest, aWaiterThatWasStoppedBeforeItAwaitsIsCancelledWhileTheTaskRuns)
{
    auto const shared = shareAnswer();
    auto const stopped = loop.start(shared.wait());
    stopped.stop();
    loop.drain();

    EXPECT_THROW(stopped.value(), Cancelled);
    EXPECT_FALSE(shared.isDone());
    answer->succeed(7);
    loop.drain();
}

TEST_F(SharedTaskTest, theStopOfTheTaskReachesAllItsWaiters)
{
    auto const shared = shareAnswer();
    auto const first = loop.start(shared.wait());
    auto const second = loop.start(shared.wait());
    loop.drain();
    shared.cancel();
    loop.drain();

    EXPECT_THROW(first.value(), Cancelled);
    EXPECT_THROW(second.value(), Cancelled);
    EXPECT_TRUE(shared.isDone());
}

TEST_F(SharedTaskTest, aTaskThatIsStoppedAfterItsEndKeepsItsOutcome)
{
    auto const shared = shareAnswer();
    answer->succeed(7);
    loop.drain();
    shared.cancel();

    EXPECT_EQ(loop.run(shared.wait()), 7);
}

TEST_F(SharedTaskTest, whatTheTaskHeldIsGoneWhenItsWaitersWake)
{
    auto const end = std::make_shared<Completion<Done>>();
    auto const held = std::make_shared<int>(0);
    auto const shared = SharedTask<void>::start(loop.context(), holdUntil(end, held));
    auto const waiter = loop.start(othersHoldingAfter(shared, held));
    loop.drain();
    end->succeed({});
    loop.drain();

    EXPECT_EQ(waiter.value(), 1) << "held by this test alone";
}

TEST_F(SharedTaskTest, eachWaiterGoesOnOnItsOwnExecutor)
{
    WorkerPool const pool({.interactive = 2, .background = 1});
    Strand const strand{pool.executor(WorkPriority::interactive)};
    auto const shared = SharedTask<int>::start(pool.executor(WorkPriority::interactive), Answer::wait(answer));
    auto const onStrandWaiter = loop.start(onStrand(strand, endsOn(shared, strand)));
    auto const onLoopWaiter = loop.start(endsOn(shared, strand));
    loop.drain();
    answer->succeed(7);
    loop.runUntil([&] { return onStrandWaiter.isDone() && onLoopWaiter.isDone(); });

    EXPECT_TRUE(onStrandWaiter.value());
    EXPECT_FALSE(onLoopWaiter.value());
}

TEST_F(SharedTaskTest, handlesAreEqualWhenTheyAreTheSameTask)
{
    auto const runs = std::make_shared<int>(0);
    auto const one = SharedTask<int>::start(loop.context(), countRuns(runs));
    auto const copy = one;
    auto const another = SharedTask<int>::start(loop.context(), countRuns(runs));
    loop.drain();

    EXPECT_EQ(one, copy);
    EXPECT_NE(one, another);
}

TEST_F(SharedTaskTest, waitersStoppedAtTheMomentOfTheResultGetOneOrTheOther)
{
    WorkerPool const pool({.interactive = 2, .background = 1});
    auto const elsewhere = pool.executor(WorkPriority::interactive);
    for (int round = 0; round < taskRaces; ++round) {
        auto const raced = std::make_shared<Answer>();
        auto const shared = SharedTask<int>::start(elsewhere, Answer::wait(raced));
        auto const staying = loop.start(onExecutor(elsewhere, shared.wait()));
        auto const leaving = loop.start(onExecutor(elsewhere, shared.wait()));
        {
            std::latch ready(3);
            std::jthread const result([&] {
                ready.arrive_and_wait();
                raced->succeed(7);
            });
            std::jthread const stopper([&] {
                ready.arrive_and_wait();
                leaving.stop();
            });
            ready.arrive_and_wait();
            ASSERT_TRUE(loop.runUntil([&] { return staying.isDone() && leaving.isDone(); }));
        }
        EXPECT_EQ(staying.value(), 7);
        if (leaving.failed())
            EXPECT_THROW(leaving.value(), Cancelled);
        else
            EXPECT_EQ(leaving.value(), 7);
    }
}

} // namespace
} // namespace tw::test
