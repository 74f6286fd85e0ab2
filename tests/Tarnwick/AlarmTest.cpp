#include "Tarnwick/Panes/Alarm.h"

#include "tests/support/ManualClock.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using std::chrono_literals::operator""ms;

class AlarmTest : public ::testing::Test {
protected:
    AlarmTest()
    {
        alarm.emplace(loop.context(), clock, [this] { ++rings; });
    }

    ~AlarmTest() override
    {
        alarm.reset();
        pass(10'000ms);
    }

    void pass(std::chrono::milliseconds time)
    {
        loop.drain();
        clock->advance(time);
        loop.drain();
    }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    int rings = 0;
    std::optional<Alarm> alarm;
};

TEST_F(AlarmTest, itRingsOnceWhenItsTimeHasCome)
{
    alarm->set(100ms);
    pass(99ms);
    EXPECT_EQ(rings, 0);
    pass(1ms);
    EXPECT_EQ(rings, 1);
    pass(1000ms);
    EXPECT_EQ(rings, 1);
}

TEST_F(AlarmTest, aNewTimeTakesThePlaceOfTheOldOne)
{
    alarm->set(100ms);
    pass(50ms);
    alarm->set(100ms);
    pass(50ms);
    EXPECT_EQ(rings, 0);
    pass(50ms);
    EXPECT_EQ(rings, 1);
}

TEST_F(AlarmTest, calledOffItDoesNotRingEvenIfItsTimeHasJustCome)
{
    alarm->set(100ms);
    loop.drain();
    clock->advance(100ms);
    alarm->cancel();
    loop.drain();
    EXPECT_EQ(rings, 0);
}

TEST_F(AlarmTest, onceGoneItDoesNotRing)
{
    alarm->set(100ms);
    loop.drain();
    clock->advance(100ms);
    alarm.reset();
    loop.drain();
    EXPECT_EQ(rings, 0);
}

} // namespace
} // namespace tw::test
