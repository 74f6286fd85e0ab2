#include "TWEngine/Runtime/EngineRuntime.h"

#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <semaphore>
#include <thread>

#include <unistd.h>

namespace tw::test {
namespace {

/// Goes from a strand to a worker and back, `rounds` times.
Task<void> alternate(WorkerPool const *workers, int rounds, std::shared_ptr<std::atomic<int>> ended)
{
    for (int round = 0; round < rounds; ++round) {
        auto const done = co_await workers->run(WorkPriority::interactive, [round] { return round; });
        EXPECT_EQ(done, round);
    }
    ++*ended;
}

TEST(EngineRuntimeTest, strandsWorkersAndTimersServeOneTask)
{
    EngineRuntime runtime;
    TestLoop loop;
    auto const strand = runtime.makeStrand();
    auto const ended = std::make_shared<std::atomic<int>>(0);
    loop.run(onStrand(strand, alternate(&runtime.workers(), 3, ended)));
    loop.run(onStrand(strand, runtime.clock()->sleep(std::chrono::milliseconds(1))));

    EXPECT_EQ(*ended, 1);
}

TEST(EngineRuntimeTest, whatGoesToAndFroBetweenStrandsAndWorkersEndsBeforeTheThreads)
{
    constexpr int times = 100;
    constexpr int tasks = 3;
    for (int time = 0; time < times; ++time) {
        auto const ended = std::make_shared<std::atomic<int>>(0);
        {
            EngineRuntime runtime;
            for (int task = 0; task < tasks; ++task)
                spawn({runtime.makeStrand().executor(), {}}, alternate(&runtime.workers(), 20, ended));
        }
        ASSERT_EQ(*ended, tasks);
    }
}

/// Tells that it has begun, and leaves its strand for a worker a little later.
Task<void> leaveSoon(WorkerPool const *workers, int yields, std::shared_ptr<std::binary_semaphore> begun,
                     std::shared_ptr<std::atomic<int>> ended)
{
    begun->release();
    for (int count = 0; count < yields; ++count)
        std::this_thread::yield();
    co_await workers->run(WorkPriority::interactive, [] {});
    ++*ended;
}

TEST(EngineRuntimeTest, workThatLeavesAStrandWhileTheEngineGoesStillComesBack)
{
    for (int time = 0; time < 1'000; ++time) {
        auto const ended = std::make_shared<std::atomic<int>>(0);
        {
            EngineRuntime runtime;
            auto const begun = std::make_shared<std::binary_semaphore>(0);
            spawn({runtime.makeStrand().executor(), {}}, leaveSoon(&runtime.workers(), time % 20, begun, ended));
            begun->acquire();
        }
        ASSERT_EQ(*ended, 1) << "in round " << time;
    }
}

TEST(EngineRuntimeTest, aWriteIntoAPipeWithoutAReaderIsAnError)
{
    EngineRuntime const runtime;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);

    EXPECT_EQ(write(ends[1], "x", 1), -1);
    EXPECT_EQ(errno, EPIPE);
    close(ends[1]);
}

TEST(EngineRuntimeTest, theEndsOfChildrenAreNotIgnoredEvenIfThatWasInherited)
{
    std::signal(SIGCHLD, SIG_IGN);
    EngineRuntime const runtime;

    EXPECT_EQ(std::signal(SIGCHLD, SIG_DFL), SIG_DFL);
}

} // namespace
} // namespace tw::test
