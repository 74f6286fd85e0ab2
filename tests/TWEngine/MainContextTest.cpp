#include "TWEngine/Runtime/MainContext.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

namespace tw::test {
namespace {

class MainContextTest : public ::testing::Test {
protected:
    int wakes = 0;
    std::vector<int> seen;
    std::shared_ptr<MainContext> context = std::make_shared<MainContext>([this] { ++wakes; });
};

TEST_F(MainContextTest, theLoopIsWokenOnceForABatch)
{
    context->post([] {});
    context->post([] {});
    context->post([] {});
    EXPECT_EQ(wakes, 1);

    EXPECT_EQ(context->runPending(), 3U);
    EXPECT_EQ(wakes, 1);

    context->post([] {});
    EXPECT_EQ(wakes, 2);
}

TEST_F(MainContextTest, nothingRunsInsidePost)
{
    context->post([this] { seen.push_back(1); });
    EXPECT_TRUE(seen.empty());
}

TEST_F(MainContextTest, workRunsInTheOrderOfItsPosting)
{
    for (int number = 0; number < 5; ++number)
        context->post([this, number] { seen.push_back(number); });
    context->runPending();

    EXPECT_EQ(seen, (std::vector{0, 1, 2, 3, 4}));
}

TEST_F(MainContextTest, whatWorkPostsWaitsForTheNextTurnAndWakesTheLoopAgain)
{
    context->post([this] {
        seen.push_back(1);
        context->post([this] { seen.push_back(3); });
        context->post([this] { seen.push_back(4); });
    });
    context->post([this] { seen.push_back(2); });

    EXPECT_EQ(context->runPending(), 2U);
    EXPECT_EQ(seen, (std::vector{1, 2}));
    EXPECT_EQ(wakes, 2);

    EXPECT_EQ(context->runPending(), 2U);
    EXPECT_EQ(seen, (std::vector{1, 2, 3, 4}));
}

TEST_F(MainContextTest, whatWorkHeldIsLetGoBeforeTheNextOneRuns)
{
    auto const held = std::make_shared<int>();
    long othersHolding = -1;
    context->post([held] {});
    context->post([&] { othersHolding = held.use_count() - 1; });
    context->runPending();

    EXPECT_EQ(othersHolding, 0);
}

TEST_F(MainContextTest, aClosedContextLetsGoOfItsWorkAndWakesNobody)
{
    auto const held = std::make_shared<int>();
    context->post([this, held] { seen.push_back(1); });
    context->close();
    EXPECT_EQ(held.use_count(), 1);

    context->post([this, held] { seen.push_back(2); });
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_EQ(wakes, 1);
    EXPECT_EQ(context->runPending(), 0U);
    EXPECT_TRUE(seen.empty());
}

TEST_F(MainContextTest, workThatIsLetGoAtTheCloseMayPostFromItsDestructor)
{
    std::shared_ptr<int> poster(new int(0), [this](int const *value) {
        delete value;
        context->post([this] { seen.push_back(1); });
    });
    context->post([held = std::move(poster)] {});
    context->close();

    EXPECT_EQ(context->runPending(), 0U);
    EXPECT_TRUE(seen.empty());
}

TEST_F(MainContextTest, workOfManyThreadsArrivesInTheOrderOfEach)
{
    constexpr int threads = 4;
    constexpr int postsOfEach = 1'000;
    std::atomic<int> woken = 0;
    auto const shared = std::make_shared<MainContext>([&] { ++woken; });
    std::vector<int> next(threads, 0);
    bool inOrder = true;
    int ran = 0;
    std::vector<std::jthread> posters;
    for (int thread = 0; thread < threads; ++thread)
        posters.emplace_back([&, thread] {
            for (int number = 0; number < postsOfEach; ++number)
                shared->post([&, thread, number] {
                    inOrder = inOrder && next[static_cast<std::size_t>(thread)]++ == number;
                    ++ran;
                });
        });
    int turns = 0;
    while (ran < threads * postsOfEach)
        turns += shared->runPending() > 0 ? 1 : 0;

    EXPECT_TRUE(inOrder);
    posters.clear();
    EXPECT_EQ(woken, turns) << "one wake for each batch";
}

} // namespace
} // namespace tw::test
