#include "TWEngine/Transfer/HostSlots.h"

#include "TWCore/Async/Cancelled.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <vector>

namespace tw::test {
namespace {

class HostSlotsTest : public testing::Test {
protected:
    using Taking = Started<HostSlots::Slot>;

    Taking take(std::string host)
    {
        auto taking = loop.start(slots.take(std::move(host)));
        loop.drain();
        return taking;
    }

    TestLoop loop;
    HostSlots slots;
};

TEST_F(HostSlotsTest, aHostHasFourAtATime)
{
    std::vector<Taking> takings;
    for (int index = 0; index < 6; ++index)
        takings.push_back(take("host"));
    for (std::size_t index = 0; index < takings.size(); ++index)
        EXPECT_EQ(takings[index].isDone(), index < HostSlots::atOnce);
    EXPECT_TRUE(take("other").isDone());
    for (auto const &taking : takings)
        taking.stop();
    loop.drain();
}

TEST_F(HostSlotsTest, whoWaitsLongestIsNext)
{
    std::vector<HostSlots::Slot> held;
    for (std::size_t index = 0; index < HostSlots::atOnce; ++index)
        held.push_back(take("host").take());
    auto const fifth = take("host");
    auto const sixth = take("host");
    held.pop_back();
    loop.drain();
    EXPECT_TRUE(fifth.isDone());
    EXPECT_FALSE(sixth.isDone());
    held.pop_back();
    loop.drain();
    EXPECT_TRUE(sixth.isDone());
}

TEST_F(HostSlotsTest, whoIsStoppedTakesNothing)
{
    std::vector<HostSlots::Slot> held;
    for (std::size_t index = 0; index < HostSlots::atOnce; ++index)
        held.push_back(take("host").take());
    auto const stopped = take("host");
    auto const next = take("host");
    stopped.stop();
    loop.drain();
    EXPECT_THROW(stopped.value(), Cancelled);
    held.pop_back();
    loop.drain();
    EXPECT_TRUE(next.isDone());
}

} // namespace
} // namespace tw::test
