#include "Tarnwick/Panes/PaneSpinner.h"

#include "tests/support/ManualClock.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using std::chrono::milliseconds;

class PaneSpinnerTest : public testing::Test {
protected:
    ~PaneSpinnerTest() override { pass(milliseconds(500)); }

    void pass(milliseconds time)
    {
        loop.drain();
        clock->advance(time);
        loop.drain();
    }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    int changes = 0;
    PaneSpinner spinner{loop.context(), clock, [this] { ++changes; }};
};

TEST_F(PaneSpinnerTest, turnsWhenWorkTakesLongerThanAMomentAndUntilItEnds)
{
    auto work = spinner.begin();
    pass(milliseconds(119));
    EXPECT_FALSE(spinner.isSpinning());
    pass(milliseconds(1));
    EXPECT_TRUE(spinner.isSpinning());
    work.reset();
    EXPECT_FALSE(spinner.isSpinning());
    EXPECT_EQ(changes, 2);
}

TEST_F(PaneSpinnerTest, doesNotTurnForWorkThatEndsInTime)
{
    auto work = spinner.begin();
    pass(milliseconds(119));
    work.reset();
    pass(milliseconds(500));
    EXPECT_EQ(changes, 0);
}

TEST_F(PaneSpinnerTest, doesNotTurnForWorkThatEndsWhenTheClockHasJustRung)
{
    auto work = spinner.begin();
    loop.drain();
    clock->advance(milliseconds(120)); // what it wakes has not run yet
    work.reset();
    loop.drain();
    EXPECT_FALSE(spinner.isSpinning());
    EXPECT_EQ(changes, 0);
}

TEST_F(PaneSpinnerTest, turnsUntilTheLastWorkHasEnded)
{
    auto first = spinner.begin();
    auto second = spinner.begin();
    pass(milliseconds(120));
    first.reset();
    EXPECT_TRUE(spinner.isSpinning());
    second.reset();
    EXPECT_FALSE(spinner.isSpinning());
    EXPECT_EQ(changes, 2);
}

TEST_F(PaneSpinnerTest, turnsAtOnceForWhatIsKnownToTakeLong)
{
    auto const work = spinner.beginLong();
    EXPECT_TRUE(spinner.isSpinning());
}

TEST_F(PaneSpinnerTest, mayGoBeforeTheWork)
{
    auto changed = 0;
    auto gone = std::make_unique<PaneSpinner>(loop.context(), clock, [&] { ++changed; });
    auto late = gone->beginLong();
    auto early = gone->begin();
    gone.reset();
    pass(milliseconds(120));
    late.reset();
    early.reset();
    EXPECT_EQ(changed, 1);
}

} // namespace
} // namespace tw::test
