#include "TWCore/Async/WhenAll.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/OnExecutor.h"
#include "TWEngine/Runtime/Completion.h"
#include "TWEngine/Runtime/WorkerPool.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace tw::test {
namespace {

using Answer = Completion<int>;

/// Tasks that end when the test says so, and the order in which they began.
class WhenAllTest : public ::testing::Test {
protected:
    std::vector<Task<int>> tasks(std::size_t count)
    {
        std::vector<Task<int>> made;
        for (std::size_t place = 0; place < count; ++place) {
            answers.push_back(std::make_shared<Answer>());
            made.push_back(wait(answers.back(), begun, place));
        }
        return made;
    }

    static Task<int> wait(std::shared_ptr<Answer> answer, std::shared_ptr<std::vector<std::size_t>> begun,
                          std::size_t place)
    {
        begun->push_back(place);
        auto const value = co_await Answer::wait(answer);
        co_return value;
    }

    Started<std::vector<int>> startAll(std::size_t count, std::size_t atOnce)
    {
        auto started = loop.start(whenAll(tasks(count), atOnce));
        loop.drain();
        return started;
    }

    void answer(std::size_t place, int value)
    {
        answers[place]->succeed(value);
        loop.drain();
    }

    using Places = std::vector<std::size_t>;

    std::vector<std::shared_ptr<Answer>> answers;
    std::shared_ptr<Places> begun = std::make_shared<Places>();
    TestLoop loop;
};

TEST_F(WhenAllTest, resultsComeInTheOrderOfTheTasks)
{
    auto const all = startAll(3, 3);
    answer(2, 30);
    answer(0, 10);
    EXPECT_FALSE(all.isDone());
    answer(1, 20);
    EXPECT_EQ(all.value(), (std::vector{10, 20, 30}));
}

TEST_F(WhenAllTest, noMoreRunThanTheBoundAllows)
{
    auto const all = startAll(5, 2);
    EXPECT_EQ(*begun, (Places{0, 1}));
    answer(1, 1);
    EXPECT_EQ(*begun, (Places{0, 1, 2}));
    answer(0, 1);
    answer(2, 1);
    answer(3, 1);
    answer(4, 1);
    EXPECT_EQ(all.value().size(), 5U);
}

TEST_F(WhenAllTest, nothingToDoIsDoneAtOnce)
{
    EXPECT_TRUE(startAll(0, 4).value().empty());
}

TEST_F(WhenAllTest, aFailureStopsTheRestAndIsThrown)
{
    auto const all = startAll(4, 2);
    answers[1]->fail(std::make_exception_ptr(std::runtime_error("no")));
    loop.drain();
    EXPECT_THROW(all.value(), std::runtime_error);
    EXPECT_EQ(*begun, (Places{0, 1}));
}

TEST_F(WhenAllTest, stoppingTheCallerStopsAll)
{
    auto const all = startAll(4, 2);
    all.stop();
    loop.drain();
    EXPECT_THROW(all.value(), Cancelled);
    EXPECT_EQ(*begun, (Places{0, 1}));
}

Task<void> addOne(std::shared_ptr<std::atomic<int>> sum)
{
    ++*sum;
    co_return;
}

TEST_F(WhenAllTest, onSeveralThreadsEachTaskRunsOnce)
{
    WorkerPool const pool({.interactive = 3, .background = 1});
    auto const sum = std::make_shared<std::atomic<int>>(0);
    std::vector<Task<void>> many;
    for (auto count = 0; count < 1000; ++count)
        many.push_back(addOne(sum));
    loop.run(onExecutor(pool.executor(WorkPriority::interactive), whenAll(std::move(many), 3)));
    EXPECT_EQ(*sum, 1000);
}

} // namespace
} // namespace tw::test
