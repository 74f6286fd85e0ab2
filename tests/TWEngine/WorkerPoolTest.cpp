#include "TWEngine/Runtime/WorkerPool.h"

#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <semaphore>
#include <stdexcept>
#include <thread>

#include <sys/resource.h>

namespace tw::test {
namespace {

constexpr WorkerPool::Limits limits{.interactive = 3, .background = 2};

class WorkerPoolTest : public ::testing::Test {
protected:
    /// Occupies a thread until it is released.
    auto block(WorkPriority priority)
    {
        return loop.start(pool->run(priority, [this] {
            begun.release();
            gate.acquire();
        }));
    }

    void waitUntilBegun(int count)
    {
        for (int number = 0; number < count; ++number)
            begun.acquire();
    }

    std::counting_semaphore<> begun{0};
    std::counting_semaphore<> gate{0};
    TestLoop loop;
    std::unique_ptr<WorkerPool> pool = std::make_unique<WorkerPool>(limits);
};

Task<long> othersHoldingAfter(Task<int> work, std::shared_ptr<int> held)
{
    co_await std::move(work);
    co_return held.use_count() - 1;
}

Task<long> othersHoldingAfterFailure(Task<void> work, std::shared_ptr<int> held)
{
    try {
        co_await std::move(work);
    } catch (std::runtime_error const &) {
    }
    co_return held.use_count() - 1;
}

TEST_F(WorkerPoolTest, workRunsOnAnotherThreadAndItsResultArrivesHere)
{
    auto const thread = loop.run(pool->run(WorkPriority::interactive, [] { return std::this_thread::get_id(); }));
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST_F(WorkerPoolTest, workMayReturnWhatCannotBeCopiedOrNothing)
{
    auto const result = loop.start(pool->run(WorkPriority::background, [] { return std::make_shared<int>(7); }));
    loop.runUntil([&] { return result.isDone(); });
    EXPECT_EQ(*result.value(), 7);

    int runs = 0;
    loop.run(pool->run(WorkPriority::interactive, [&] { ++runs; }));
    EXPECT_EQ(runs, 1);
}

TEST_F(WorkerPoolTest, whatWorkThrowsIsThrownToTheOneThatAwaits)
{
    EXPECT_THROW(loop.run(pool->run(WorkPriority::interactive, [] { throw std::runtime_error("no"); })),
                 std::runtime_error);
    EXPECT_THROW(loop.run(pool->run(WorkPriority::background, []() -> int { throw std::runtime_error("no"); })),
                 std::runtime_error);
}

TEST_F(WorkerPoolTest, interactiveWorkDoesNotWaitBehindBackgroundWork)
{
    auto const first = block(WorkPriority::background);
    auto const second = block(WorkPriority::background);
    auto const queued = block(WorkPriority::background);
    loop.drain();
    waitUntilBegun(2);

    EXPECT_EQ(loop.run(pool->run(WorkPriority::interactive, [] { return 7; })), 7);
    EXPECT_FALSE(first.isDone() || second.isDone() || queued.isDone());

    gate.release(3);
    loop.runUntil([&] { return first.isDone() && second.isDone() && queued.isDone(); });
}

TEST_F(WorkerPoolTest, noMoreThreadsWorkThanTheLimitAllows)
{
    constexpr int jobs = 200;
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    std::vector<Started<void>> started;
    for (int job = 0; job < jobs; ++job)
        started.push_back(loop.start(pool->run(WorkPriority::interactive, [&] {
            auto const now = ++inside;
            for (auto seen = most.load(); now > seen && !most.compare_exchange_weak(seen, now);) {
            }
            std::this_thread::yield();
            --inside;
        })));
    loop.runUntil([&] { return std::ranges::all_of(started, [](auto const &job) { return job.isDone(); }); });

    EXPECT_LE(most, static_cast<int>(limits.interactive));
}

TEST_F(WorkerPoolTest, asManyThreadsWorkAtOnceAsTheLimitAllows)
{
    std::vector<Started<void>> blocked;
    for (std::size_t number = 0; number < limits.interactive; ++number)
        blocked.push_back(block(WorkPriority::interactive));
    loop.drain();
    waitUntilBegun(static_cast<int>(limits.interactive)); // would hang if one of them had to wait for another

    gate.release(static_cast<std::ptrdiff_t>(limits.interactive));
    loop.runUntil([&] { return std::ranges::all_of(blocked, [](auto const &job) { return job.isDone(); }); });
}

TEST_F(WorkerPoolTest, backgroundWorkGivesWayToEverythingElse)
{
    auto const niceness = [] { return getpriority(PRIO_PROCESS, 0); }; // of the calling thread, on Linux
    auto const ours = niceness();

    EXPECT_GE(loop.run(pool->run(WorkPriority::background, niceness)), 10);
    EXPECT_EQ(loop.run(pool->run(WorkPriority::interactive, niceness)), ours);
}

TEST_F(WorkerPoolTest, aStoppedCallerGoesOnAtOnceAndWorkThatHasNotBegunIsSkipped)
{
    std::vector<Started<void>> blocked;
    for (std::size_t number = 0; number < limits.background; ++number)
        blocked.push_back(block(WorkPriority::background));
    loop.drain();
    waitUntilBegun(static_cast<int>(limits.background));
    bool ran = false;
    auto const held = std::make_shared<int>();
    auto const queued = loop.start(pool->run(WorkPriority::background, [&ran, held] { ran = true; }));
    loop.drain();
    queued.stop();
    loop.drain();
    EXPECT_THROW(queued.value(), Cancelled);

    gate.release(static_cast<std::ptrdiff_t>(limits.background));
    pool.reset(); // runs what is queued
    loop.drain();
    EXPECT_FALSE(ran);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(WorkerPoolTest, aCallerThatWasStoppedBeforeItAwaitsIsCancelledAndTheWorkIsSkipped)
{
    bool ran = false;
    auto const stopped = loop.start(pool->run(WorkPriority::interactive, [&] { ran = true; }));
    stopped.stop();
    loop.drain();
    EXPECT_THROW(stopped.value(), Cancelled);

    pool.reset();
    EXPECT_FALSE(ran);
}

TEST_F(WorkerPoolTest, aCallerThatIsStoppedDoesNotWaitForWorkThatHasBegun)
{
    auto const blocked = block(WorkPriority::interactive);
    loop.drain();
    waitUntilBegun(1);
    blocked.stop();
    loop.drain();

    EXPECT_THROW(blocked.value(), Cancelled);
    gate.release();
}

TEST_F(WorkerPoolTest, whatTheWorkHeldIsGoneWhenItsCallerGoesOn)
{
    auto const held = std::make_shared<int>(7);
    for (int round = 0; round < 200; ++round) {
        auto work = pool->run(WorkPriority::interactive, [held] { return *held; });
        EXPECT_EQ(loop.run(othersHoldingAfter(std::move(work), held)), 1) << "held by this test alone";
    }
}

TEST_F(WorkerPoolTest, whatTheWorkHeldIsGoneWhenItsCallerIsToldOfItsFailure)
{
    auto const held = std::make_shared<int>(7);
    for (int round = 0; round < 200; ++round) {
        auto work = pool->run(WorkPriority::interactive, [held] { throw std::runtime_error("no"); });
        EXPECT_EQ(loop.run(othersHoldingAfterFailure(std::move(work), held)), 1) << "held by this test alone";
    }
}

TEST_F(WorkerPoolTest, theDestructorRunsWhatIsQueued)
{
    constexpr int jobs = 100;
    std::atomic<int> ran = 0;
    auto const executor = pool->executor(WorkPriority::background);
    for (int job = 0; job < jobs; ++job)
        executor->post([&] { ++ran; });
    pool.reset();

    EXPECT_EQ(ran, jobs);
}

TEST_F(WorkerPoolTest, whatQueuedWorkPostsRunsBeforeTheDestructorIsDone)
{
    std::atomic<int> ran = 0;
    auto const executor = pool->executor(WorkPriority::interactive);
    executor->post([&] {
        begun.release();
        gate.acquire();
        executor->post([&] { ++ran; });
    });
    waitUntilBegun(1);
    std::jthread const opener([&] { gate.release(); });
    pool.reset();

    EXPECT_EQ(ran, 1);
}

TEST_F(WorkerPoolTest, workPostedAfterTheDestructorIsLetGo)
{
    auto const executor = pool->executor(WorkPriority::interactive);
    pool.reset();
    bool ran = false;
    auto const held = std::make_shared<int>();
    executor->post([&ran, held] { ran = true; });

    EXPECT_FALSE(ran);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(WorkerPoolTest, workPostedFromManyThreadsWhileThePoolGoesRunsOrIsLetGo)
{
    for (int round = 0; round < 200; ++round) {
        auto const held = std::make_shared<int>();
        auto racing = std::make_unique<WorkerPool>(limits);
        auto const executor = racing->executor(WorkPriority::interactive);
        {
            std::latch ready(3);
            auto const post = [&] {
                ready.arrive_and_wait();
                for (int job = 0; job < 10; ++job)
                    executor->post([held] {});
            };
            std::jthread const first(post);
            std::jthread const second(post);
            ready.arrive_and_wait();
            racing.reset();
        }
        EXPECT_EQ(held.use_count(), 1);
    }
}

TEST(WorkerPoolDeathTest, workForAPriorityWithoutThreadsIsABug)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(WorkerPool({.interactive = 1, .background = 0}).executor(WorkPriority::background)->post([] {}),
                 "bug: work of a priority that has no threads");
}

} // namespace
} // namespace tw::test
