#include "TWEngine/Runtime/Strand.h"

#include "TWEngine/Runtime/WorkerPool.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <stdexcept>
#include <thread>

namespace tw::test {
namespace {

constexpr int postingThreads = 4;
constexpr int postsOfEach = 2'000;

class StrandTest : public ::testing::Test {
protected:
    WorkerPool pool{{.interactive = 4, .background = 1}};
    Strand strand{pool.executor(WorkPriority::interactive)};
    TestLoop loop;
};

Task<void> nothing()
{
    co_return;
}

Task<bool> isOn(Strand strand)
{
    co_return strand.runsHere();
}

/// Holds something in its frame whose destructor tells whether it ran on the strand.
struct Leaver {
    Strand strand;
    bool *leftThere;

    Leaver(Strand ground, bool *where) : strand(std::move(ground)), leftThere(where) {}

    Leaver(Leaver &&other) noexcept : strand(other.strand), leftThere(std::exchange(other.leftThere, nullptr)) {}

    Leaver &operator=(Leaver &&) = delete;

    ~Leaver()
    {
        if (leftThere)
            *leftThere = strand.runsHere();
    }
};

Task<void> leave(Leaver leaver, bool fails)
{
    auto const leaving = std::move(leaver);
    if (fails)
        throw std::runtime_error("failed there");
    co_return;
}

/// Posts itself again and again until it is told to end.
void keepBusy(std::shared_ptr<Executor> const &executor, std::shared_ptr<std::atomic<bool>> const &mayEnd,
              std::shared_ptr<std::atomic<bool>> const &hasEnded)
{
    executor->post([=] {
        if (*mayEnd)
            *hasEnded = true;
        else
            keepBusy(executor, mayEnd, hasEnded);
    });
}

TEST_F(StrandTest, workRunsOneAtATimeAndInTheOrderOfEachPoster)
{
    struct Item {
        int thread;
        int number;
    };

    std::vector<Item> seen; // not guarded by anything but the strand
    std::atomic<int> inside = 0;
    std::atomic<bool> overlapped = false;
    {
        std::vector<std::jthread> posters;
        for (int thread = 0; thread < postingThreads; ++thread)
            posters.emplace_back([&, thread] {
                for (int number = 0; number < postsOfEach; ++number)
                    strand.executor()->post([&, thread, number] {
                        if (inside.fetch_add(1) != 0)
                            overlapped = true;
                        seen.push_back({thread, number});
                        inside.fetch_sub(1);
                    });
            });
    }
    loop.run(onStrand(strand, nothing())); // behind all of them

    EXPECT_FALSE(overlapped);
    ASSERT_EQ(seen.size(), std::size_t{postingThreads} * postsOfEach);
    std::array<int, postingThreads> next{};
    for (auto const &item : seen)
        EXPECT_EQ(item.number, next.at(static_cast<std::size_t>(item.thread))++);
}

TEST_F(StrandTest, aTaskRunsOnTheStrandAndItsCallerGoesOnWhereItWas)
{
    EXPECT_FALSE(strand.runsHere());
    EXPECT_TRUE(loop.run(onStrand(strand, isOn(strand))));
    EXPECT_FALSE(strand.runsHere());
}

TEST_F(StrandTest, aStrandKnowsItselfFromAnother)
{
    Strand const other{pool.executor(WorkPriority::interactive)};
    EXPECT_FALSE(loop.run(onStrand(strand, isOn(other))));
}

TEST_F(StrandTest, theFrameOfATaskIsDestroyedOnTheStrand)
{
    bool leftThere = false;
    loop.run(onStrand(strand, leave(Leaver(strand, &leftThere), false)));
    EXPECT_TRUE(leftThere);
}

TEST_F(StrandTest, theFrameOfATaskThatFailsIsDestroyedOnTheStrandToo)
{
    bool leftThere = false;
    EXPECT_THROW(loop.run(onStrand(strand, leave(Leaver(strand, &leftThere), true))), std::runtime_error);
    EXPECT_TRUE(leftThere);
}

TEST_F(StrandTest, aStrandThatIsNeverIdleDoesNotKeepTheThreadFromAnother)
{
    WorkerPool const oneThread({.interactive = 1, .background = 1});
    Strand const busy{oneThread.executor(WorkPriority::interactive)};
    Strand const other{oneThread.executor(WorkPriority::interactive)};
    auto const mayEnd = std::make_shared<std::atomic<bool>>(false);
    auto const hasEnded = std::make_shared<std::atomic<bool>>(false);

    keepBusy(busy.executor(), mayEnd, hasEnded);
    loop.run(onStrand(other, nothing()));
    EXPECT_FALSE(*hasEnded);

    *mayEnd = true;
    loop.run(onStrand(busy, nothing()));
    loop.run(onStrand(busy, nothing()));
    EXPECT_TRUE(*hasEnded);
}

TEST_F(StrandTest, whatWorkHeldIsLetGoBeforeTheNextOneRuns)
{
    auto const held = std::make_shared<int>();
    long othersHolding = -1;
    Strand const here{loop.context()};
    here.executor()->post([held] {});
    here.executor()->post([&] { othersHolding = held.use_count() - 1; });
    loop.drain();

    EXPECT_EQ(othersHolding, 0);
}

TEST_F(StrandTest, aStrandStandsOnAMainContextAsWell)
{
    Strand const here{loop.context()};
    std::vector<int> seen;
    here.executor()->post([&] {
        seen.push_back(1);
        here.executor()->post([&] { seen.push_back(3); });
    });
    here.executor()->post([&] { seen.push_back(2); });
    loop.drain();

    EXPECT_EQ(seen, (std::vector{1, 2, 3}));
}

TEST_F(StrandTest, workPostedAfterItsThreadsHaveGoneIsLetGo)
{
    auto const held = std::make_shared<int>();
    auto gone = std::make_unique<WorkerPool>(WorkerPool::Limits{.interactive = 1, .background = 1});
    Strand const orphan{gone->executor(WorkPriority::interactive)};
    gone.reset();

    bool ran = false;
    orphan.executor()->post([&ran, held] { ran = true; });
    orphan.executor()->post([&ran, held] { ran = true; });

    EXPECT_FALSE(ran);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(StrandTest, aTaskSpawnedAfterItsThreadsHaveGoneIsLetGo)
{
    auto const held = std::make_shared<int>();
    auto gone = std::make_unique<WorkerPool>(WorkerPool::Limits{.interactive = 1, .background = 1});
    Strand const orphan{gone->executor(WorkPriority::interactive)};
    gone.reset();

    spawn({orphan.executor(), {}}, [](auto) -> Task<void> { co_return; }(held));

    EXPECT_EQ(held.use_count(), 1);
}

} // namespace
} // namespace tw::test
