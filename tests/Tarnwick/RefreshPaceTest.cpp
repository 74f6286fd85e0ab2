#include "Tarnwick/Panes/RefreshPace.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class RefreshPaceTest : public ::testing::Test {
protected:
    /// In milliseconds since the beginning.
    std::optional<std::int64_t> due() const
    {
        auto const at = pace.due();
        return at ? std::optional(std::chrono::duration_cast<milliseconds>(*at - begin).count()) : std::nullopt;
    }

    void changed(std::int64_t at) { pace.changed(begin + milliseconds(at)); }

    void read(std::int64_t from, std::int64_t to)
    {
        pace.readingBegan();
        pace.readingEnded(begin + milliseconds(from), begin + milliseconds(to));
    }

    RefreshPace::Time const begin{std::chrono::hours(1)};
    RefreshPace pace;
};

TEST_F(RefreshPaceTest, aBurstIsReadWhenItIsOver)
{
    EXPECT_EQ(due(), std::nullopt);
    changed(0);
    EXPECT_EQ(due(), 300);
    changed(200);
    EXPECT_EQ(due(), 500);
}

TEST_F(RefreshPaceTest, aFolderThatNeverRestsIsReadASecondAfterItsFirstChange)
{
    for (int at = 0; at <= 2000; at += 50)
        changed(at);
    EXPECT_EQ(due(), 1000);
    read(1000, 1010);
    EXPECT_EQ(due(), std::nullopt);
    changed(1050);
    changed(2040);
    EXPECT_EQ(due(), 2050);
}

TEST_F(RefreshPaceTest, aLongListingIsFollowedByARestOfNineTimesItsLength)
{
    read(0, 400);
    changed(400);
    EXPECT_EQ(due(), 4000);
    read(4000, 64000);
    changed(64000);
    EXPECT_EQ(due(), 94000) << "but of no more than half a minute";
}

TEST_F(RefreshPaceTest, withoutEventsAFolderIsReadEveryFourSecondsAndALongOneLessOften)
{
    EXPECT_EQ(pace.untilLook(), seconds(4));
    read(0, 20);
    EXPECT_EQ(pace.untilLook(), seconds(4));
    read(0, 200);
    EXPECT_EQ(pace.untilLook(), seconds(10));
    read(0, 5000);
    EXPECT_EQ(pace.untilLook(), seconds(30));
}

} // namespace
} // namespace tw::test
