#include "TWCore/Async/Task.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/OnExecutor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <stdexcept>
#include <string>

namespace tw::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// Runs what was posted when it is told to, and tells which executor is running.
class QueueExecutor final : public Executor {
public:
    void post(Work work) override { queue.push_back(std::move(work)); }

    void drain()
    {
        while (!queue.empty()) {
            auto work = std::move(queue.front());
            queue.pop_front();
            running = this;
            work();
            work = nullptr;
            running = nullptr;
        }
    }

    void dropAll() { queue.clear(); }

    bool isEmpty() const { return queue.empty(); }

    static inline QueueExecutor const *running = nullptr;

private:
    std::deque<Work> queue;
};

/// Notes on which executor it is destroyed.
struct Leaver {
    QueueExecutor const **whereDestroyed;

    explicit Leaver(QueueExecutor const **where) : whereDestroyed(where) {}

    Leaver(Leaver &&other) noexcept : whereDestroyed(std::exchange(other.whereDestroyed, nullptr)) {}

    Leaver &operator=(Leaver &&) = delete;

    ~Leaver()
    {
        if (whereDestroyed)
            *whereDestroyed = QueueExecutor::running;
    }
};

class TaskTest : public ::testing::Test {
protected:
    void run(Task<void> task)
    {
        spawn({home, stop.get_token()}, std::move(task));
        drain();
    }

    void drain()
    {
        while (!home->isEmpty() || !other->isEmpty()) {
            home->drain();
            other->drain();
        }
    }

    /// What the process says on standard error while the task runs.
    std::string saidBy(Task<void> task)
    {
        ::testing::internal::CaptureStderr();
        run(std::move(task));
        return ::testing::internal::GetCapturedStderr();
    }

    std::shared_ptr<QueueExecutor> home = std::make_shared<QueueExecutor>();
    std::shared_ptr<QueueExecutor> other = std::make_shared<QueueExecutor>();
    std::stop_source stop;
};

Task<void> count(int *runs, std::shared_ptr<int> held)
{
    *runs += *held;
    co_return;
}

Task<int> answer(int value)
{
    co_return value;
}

Task<std::unique_ptr<int>> own(int value)
{
    co_return std::make_unique<int>(value);
}

Task<int> refuse(std::string reason)
{
    throw std::runtime_error(reason);
    co_return 0;
}

Task<void> keep(Task<int> task, int *result)
{
    *result = co_await std::move(task);
}

Task<void> keepOwned(Task<std::unique_ptr<int>> task, std::unique_ptr<int> *result)
{
    *result = co_await std::move(task);
}

Task<void> keepReason(Task<int> task, std::string *reason)
{
    try {
        co_await std::move(task);
    } catch (std::runtime_error const &failure) {
        *reason = failure.what();
    }
}

Task<void> keepContext(TaskContext *seen)
{
    *seen = co_await currentContext();
}

Task<void> awaitIt(Task<void> task)
{
    co_await std::move(task);
}

Task<void> awaitUnder(Task<void> task, std::stop_token token)
{
    co_await std::move(task).withStop(std::move(token));
}

Task<void> throwCancelled()
{
    throw Cancelled();
    co_return;
}

Task<void> throwAnInt()
{
    throw 7;
    co_return;
}

Task<void> throwText(std::string reason)
{
    throw std::runtime_error(reason);
    co_return;
}

Task<void> noteWhere(QueueExecutor const **where)
{
    *where = QueueExecutor::running;
    co_return;
}

Task<int> leaveThere(Leaver leaver)
{
    auto const leaving = std::move(leaver);
    co_return 1;
}

Task<int> refuseThere(Leaver leaver)
{
    auto const leaving = std::move(leaver);
    throw std::runtime_error("refused there");
    co_return 1;
}

Task<void> sumOf(int rounds, long *sum)
{
    for (int round = 0; round < rounds; ++round) {
        auto const one = co_await answer(1);
        *sum += one;
    }
}

Task<int> depthOf(int levels)
{
    if (levels == 0)
        co_return 0;
    auto const below = co_await depthOf(levels - 1);
    co_return below + 1;
}

TEST_F(TaskTest, aTaskThatIsNeverAwaitedNeverRunsAndFreesItsArguments)
{
    int runs = 0;
    auto const held = std::make_shared<int>(1);
    {
        auto const task = count(&runs, held);
        EXPECT_EQ(held.use_count(), 2);
    }

    EXPECT_EQ(runs, 0);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(TaskTest, aSpawnedTaskRunsOnItsExecutorAndNotInsideTheCall)
{
    int runs = 0;
    auto const held = std::make_shared<int>(1);
    spawn({home, {}}, count(&runs, held));
    EXPECT_EQ(runs, 0);

    home->drain();

    EXPECT_EQ(runs, 1);
    EXPECT_EQ(held.use_count(), 1) << "the frame is freed at its end";
}

TEST_F(TaskTest, aSpawnedTaskThatItsExecutorDropsFreesItsArguments)
{
    int runs = 0;
    auto const held = std::make_shared<int>(1);
    spawn({home, {}}, count(&runs, held));

    home->dropAll();

    EXPECT_EQ(runs, 0);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(TaskTest, aResultReachesTheOneThatAwaits)
{
    int result = 0;
    run(keep(answer(42), &result));
    EXPECT_EQ(result, 42);
}

TEST_F(TaskTest, aResultNeedNotBeCopyable)
{
    std::unique_ptr<int> result;
    run(keepOwned(own(42), &result));
    ASSERT_TRUE(result);
    EXPECT_EQ(*result, 42);
}

TEST_F(TaskTest, whatATaskThrowsReachesTheOneThatAwaits)
{
    std::string reason;
    run(keepReason(refuse("not today"), &reason));
    EXPECT_EQ(reason, "not today");
}

TEST_F(TaskTest, theContextIsInheritedFromTheOneThatAwaits)
{
    TaskContext seen;
    run(awaitIt(keepContext(&seen)));

    EXPECT_EQ(seen.executor, home);
    EXPECT_EQ(seen.stop, stop.get_token());
}

TEST_F(TaskTest, withStopReplacesTheTokenForTheTaskAndWhatItAwaits)
{
    TaskContext seen;
    std::stop_source own;
    run(awaitUnder(awaitIt(keepContext(&seen)), own.get_token()));

    EXPECT_EQ(seen.executor, home);
    EXPECT_EQ(seen.stop, own.get_token());
}

TEST_F(TaskTest, workOnAnotherExecutorRunsThereAndTheCallerGoesOnWhereItWas)
{
    QueueExecutor const *there = nullptr;
    QueueExecutor const *after = nullptr;
    run([](auto executor, auto *during, auto *afterwards) -> Task<void> {
        co_await onExecutor(executor, noteWhere(during));
        *afterwards = QueueExecutor::running;
    }(other, &there, &after));

    EXPECT_EQ(there, other.get());
    EXPECT_EQ(after, home.get());
}

TEST_F(TaskTest, workOnAnotherExecutorInheritsThatExecutorAndTheStop)
{
    TaskContext seen;
    run(onExecutor(std::shared_ptr<Executor>(other), keepContext(&seen)));

    EXPECT_EQ(seen.executor, other);
    EXPECT_EQ(seen.stop, stop.get_token());
}

TEST_F(TaskTest, theFrameOfWorkOnAnotherExecutorIsDestroyedThere)
{
    QueueExecutor const *where = nullptr;
    int result = 0;
    run(keep(onExecutor(std::shared_ptr<Executor>(other), leaveThere(Leaver(&where))), &result));

    EXPECT_EQ(result, 1);
    EXPECT_EQ(where, other.get());
}

TEST_F(TaskTest, aFailureOnAnotherExecutorComesBackAndTheFrameIsDestroyedThere)
{
    QueueExecutor const *where = nullptr;
    std::string reason;
    run(keepReason(onExecutor(std::shared_ptr<Executor>(other), refuseThere(Leaver(&where))), &reason));

    EXPECT_EQ(reason, "refused there");
    EXPECT_EQ(where, other.get());
}

TEST_F(TaskTest, manyAwaitsInARowDoNotGrowTheStack)
{
    constexpr int rounds = 200'000; // some 20 MiB, if each left a stack frame of a hundred bytes
    long sum = 0;
    run(sumOf(rounds, &sum));
    EXPECT_EQ(sum, rounds);
}

TEST_F(TaskTest, deeplyNestedTasksDoNotGrowTheStack)
{
    constexpr int levels = 200'000;
    int depth = 0;
    run(keep(depthOf(levels), &depth));
    EXPECT_EQ(depth, levels);
}

TEST_F(TaskTest, whatASpawnedTaskThrowsIsReportedOnStandardError)
{
    EXPECT_THAT(saidBy(throwText("the disk has gone")), HasSubstr("the disk has gone"));
    EXPECT_THAT(saidBy(throwAnInt()), HasSubstr("unknown type"));
}

TEST_F(TaskTest, aSpawnedTaskThatWasCancelledEndsQuietly)
{
    EXPECT_THAT(saidBy(throwCancelled()), IsEmpty());
}

Task<void> awaitTwice(Task<void> task)
{
    co_await std::move(task);
    co_await std::move(task); // NOLINT(bugprone-use-after-move): the mistake that the check is for
}

using TaskDeathTest = TaskTest;

TEST_F(TaskDeathTest, aTaskIsAwaitedOnce)
{
    int runs = 0;
    auto const held = std::make_shared<int>(1);
    auto moved = count(&runs, held);
    auto const movedTo = std::move(moved);

    EXPECT_DEATH(run(awaitTwice(count(&runs, held))), "bug: a task is awaited once");
    // NOLINTNEXTLINE(bugprone-use-after-move): the mistake that the check is for
    EXPECT_DEATH(run(awaitIt(std::move(moved))), "bug: a task is awaited once");
}

TEST_F(TaskTest, assigningATaskDropsTheOneThatWasThere)
{
    int runs = 0;
    auto const first = std::make_shared<int>(1);
    auto const second = std::make_shared<int>(1);
    auto task = count(&runs, first);
    task = count(&runs, second);

    EXPECT_EQ(first.use_count(), 1);
    EXPECT_EQ(second.use_count(), 2);
}

} // namespace
} // namespace tw::test
