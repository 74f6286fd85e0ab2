#include "TWEngine/Runtime/Completion.h"

#include "TWCore/Async/OnExecutor.h"
#include "TWEngine/Runtime/WorkerPool.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <latch>
#include <stdexcept>
#include <thread>

namespace tw::test {
namespace {

/// Rounds of a race; each of them starts its threads anew.
constexpr int completionRaces = 500;

class CompletionTest : public ::testing::Test {
protected:
    using Answer = Completion<int>;

    std::shared_ptr<Answer> answer = std::make_shared<Answer>();
    TestLoop loop;
};

Task<int> waitOn(std::shared_ptr<Executor> executor, std::shared_ptr<Completion<int>> answer)
{
    return onExecutor(std::move(executor), Completion<int>::wait(std::move(answer)));
}

Task<std::thread::id> threadAfter(std::shared_ptr<Completion<int>> answer)
{
    co_await Completion<int>::wait(answer);
    co_return std::this_thread::get_id();
}

TEST_F(CompletionTest, anOutcomeThatIsThereAlreadyIsNotWaitedFor)
{
    answer->succeed(7);
    EXPECT_EQ(loop.run(Answer::wait(answer)), 7);
}

TEST_F(CompletionTest, theWaiterGoesOnWithTheValueThatComesLater)
{
    auto const waiter = loop.start(Answer::wait(answer));
    loop.drain();
    EXPECT_FALSE(waiter.isDone());

    answer->succeed(7);
    EXPECT_FALSE(waiter.isDone()) << "nothing runs inside the call";
    loop.drain();

    EXPECT_EQ(waiter.value(), 7);
}

TEST_F(CompletionTest, theWaiterGoesOnWithTheFailure)
{
    auto const waiter = loop.start(Answer::wait(answer));
    loop.drain();
    answer->fail(std::make_exception_ptr(std::runtime_error("no")));
    loop.drain();

    EXPECT_THROW(waiter.value(), std::runtime_error);
}

TEST_F(CompletionTest, theFirstOutcomeWins)
{
    EXPECT_TRUE(answer->succeed(7));
    EXPECT_FALSE(answer->succeed(8));
    EXPECT_FALSE(answer->fail(std::make_exception_ptr(std::runtime_error("late"))));

    EXPECT_EQ(loop.run(Answer::wait(answer)), 7);
}

TEST_F(CompletionTest, aWaiterThatWasStoppedBeforeItAwaitsIsCancelled)
{
    auto const waiter = loop.start(Answer::wait(answer));
    waiter.stop();
    loop.drain();

    EXPECT_THROW(waiter.value(), Cancelled);
    EXPECT_FALSE(answer->succeed(7));
}

TEST_F(CompletionTest, aWaiterThatIsStoppedBeforeItAwaitsStillGetsAnOutcomeThatIsThere)
{
    answer->succeed(7);
    auto const waiter = loop.start(Answer::wait(answer));
    waiter.stop();
    loop.drain();

    EXPECT_EQ(waiter.value(), 7);
}

TEST_F(CompletionTest, aWaiterThatIsStoppedWhileItWaitsIsCancelled)
{
    auto const waiter = loop.start(Answer::wait(answer));
    loop.drain();
    waiter.stop();
    loop.drain();

    EXPECT_THROW(waiter.value(), Cancelled);
}

TEST_F(CompletionTest, theWaiterGoesOnOnItsOwnExecutor)
{
    auto const waiter = loop.start(threadAfter(answer));
    loop.drain();
    std::jthread([&] { answer->succeed(7); }).join();
    loop.drain();

    EXPECT_EQ(waiter.value(), std::this_thread::get_id());
}

TEST_F(CompletionTest, nothingOfAFinishedWaitIsKept)
{
    auto const waiter = loop.start(Answer::wait(answer));
    loop.drain();
    answer->succeed(7);
    loop.drain();

    EXPECT_EQ(waiter.value(), 7);
    EXPECT_EQ(answer.use_count(), 1);
}

TEST_F(CompletionTest, exactlyOneOfResultFailureAndStopWinsARace)
{
    WorkerPool const pool({.interactive = 2, .background = 1});
    auto const elsewhere = pool.executor(WorkPriority::interactive);
    for (int round = 0; round < completionRaces; ++round) {
        auto const raced = std::make_shared<Answer>();
        auto const waiter = loop.start(waitOn(elsewhere, raced));
        bool succeeded = false;
        bool failed = false;
        {
            std::latch ready(4);
            std::jthread const result([&] {
                ready.arrive_and_wait();
                succeeded = raced->succeed(7);
            });
            std::jthread const failure([&] {
                ready.arrive_and_wait();
                failed = raced->fail(std::make_exception_ptr(std::runtime_error("no")));
            });
            std::jthread const stopper([&] {
                ready.arrive_and_wait();
                waiter.stop();
            });
            ready.arrive_and_wait();
            ASSERT_TRUE(loop.runUntil([&] { return waiter.isDone(); }));
        }
        if (succeeded)
            EXPECT_EQ(waiter.value(), 7);
        else if (failed)
            EXPECT_THROW(waiter.value(), std::runtime_error);
        else
            EXPECT_THROW(waiter.value(), Cancelled);
        EXPECT_FALSE(succeeded && failed);
        EXPECT_EQ(raced.use_count(), 1);
    }
}

} // namespace
} // namespace tw::test
