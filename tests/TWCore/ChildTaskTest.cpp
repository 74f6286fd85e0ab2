#include "TWCore/Async/ChildTask.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/OnExecutor.h"
#include "TWEngine/Runtime/Completion.h"
#include "TWEngine/Runtime/WorkerPool.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

namespace tw::test {
namespace {

using Answer = Completion<int>;

/// Waits for the answer, and counts how many of its kind have not ended.
Task<int> waitFor(std::shared_ptr<Answer> answer, std::shared_ptr<int> running)
{
    ++*running;
    auto outcome = co_await outcomeOf(Answer::wait(answer));
    --*running;
    co_return outcome.take();
}

/// A parent with one child, which does something of its own while the child runs.
Task<int> parentOf(std::shared_ptr<Answer> ofChild, std::shared_ptr<Answer> own, std::shared_ptr<int> running)
{
    auto const context = co_await currentContext();
    auto const child = ChildTask<int>::start(context, waitFor(ofChild, running));
    auto const mine = co_await Answer::wait(own);
    auto const theirs = co_await child.join();
    co_return 10 * mine + theirs;
}

class ChildTaskTest : public ::testing::Test {
protected:
    Started<int> startParent()
    {
        auto started = loop.start(parentOf(ofChild, ofParent, running));
        loop.drain();
        return started;
    }

    std::shared_ptr<Answer> ofChild = std::make_shared<Answer>();
    std::shared_ptr<Answer> ofParent = std::make_shared<Answer>();
    std::shared_ptr<int> running = std::make_shared<int>(0);
    TestLoop loop;
};

TEST_F(ChildTaskTest, itRunsBesideItsParent)
{
    auto const parent = startParent();
    EXPECT_EQ(*running, 1);

    ofParent->succeed(4);
    loop.drain();
    EXPECT_FALSE(parent.isDone());
    ofChild->succeed(2);
    loop.drain();
    EXPECT_EQ(parent.value(), 42);
}

TEST_F(ChildTaskTest, aChildThatHasEndedIsJoinedWithoutWaiting)
{
    auto const parent = startParent();
    ofChild->succeed(2);
    loop.drain();
    EXPECT_EQ(*running, 0);

    ofParent->succeed(4);
    loop.drain();
    EXPECT_EQ(parent.value(), 42);
}

TEST_F(ChildTaskTest, itStopsWithItsParent)
{
    auto const parent = startParent();
    parent.stop();
    loop.drain();
    EXPECT_THROW(parent.value(), Cancelled);
    EXPECT_EQ(*running, 0);
}

TEST_F(ChildTaskTest, itStopsWhenItsParentFails)
{
    auto const parent = startParent();
    ofParent->fail(std::make_exception_ptr(std::runtime_error("no")));
    loop.drain();
    EXPECT_THROW(parent.value(), std::runtime_error);
    EXPECT_EQ(*running, 0);
}

TEST_F(ChildTaskTest, itsFailureIsThrownWhereItIsJoined)
{
    auto const parent = startParent();
    ofChild->fail(std::make_exception_ptr(std::runtime_error("no")));
    loop.drain();
    EXPECT_FALSE(parent.isDone());

    ofParent->succeed(4);
    loop.drain();
    EXPECT_THROW(parent.value(), std::runtime_error);
}

/// Ends only when the answer is there; ignores every request to stop.
Task<int> stubborn(std::shared_ptr<Answer> answer)
{
    auto const value = co_await Answer::wait(answer).withStop({});
    co_return value;
}

TEST_F(ChildTaskTest, aStoppedJoinerWaitsForTheEndOfItsChild)
{
    auto const child = ChildTask<int>::start({loop.context(), {}}, stubborn(ofChild));
    auto const joining = loop.start(child.join());
    loop.drain();
    joining.stop();
    loop.drain();
    EXPECT_FALSE(joining.isDone());

    ofChild->succeed(7);
    loop.drain();
    EXPECT_EQ(joining.value(), 7);
}

/// Starts a child that another thread answers, and joins it at about the same time.
Task<int> race(std::shared_ptr<std::atomic<bool>> go)
{
    auto const context = co_await currentContext();
    auto const answer = std::make_shared<Answer>();
    auto const child = ChildTask<int>::start(context, stubborn(answer));
    std::jthread const other([answer, go] {
        while (!*go)
            std::this_thread::yield();
        answer->succeed(1);
    });
    *go = true;
    auto const value = co_await child.join();
    co_return value;
}

TEST_F(ChildTaskTest, onSeveralThreadsNoEndIsMissed)
{
    WorkerPool const pool({.interactive = 3, .background = 1});
    auto sum = 0;
    for (auto round = 0; round < 200; ++round)
        sum +=
            loop.run(onExecutor(pool.executor(WorkPriority::interactive), race(std::make_shared<std::atomic<bool>>())));
    EXPECT_EQ(sum, 200);
}

} // namespace
} // namespace tw::test
