#include "TWCore/Check.h"

namespace tw::test {

TEST(CheckTest, aConditionThatHoldsDoesNothing)
{
    EXPECT_NO_FATAL_FAILURE(check(true, "never said"));
}

TEST(CheckDeathTest, aBrokenInvariantStopsTheProcessWithItsMessageAndPlace)
{
    EXPECT_DEATH(check(false, "two cannot be three"), "bug: two cannot be three .*CheckTest");
    EXPECT_DEATH(bug("unreachable"), "bug: unreachable");
}

} // namespace tw::test
