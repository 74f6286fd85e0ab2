#include "tests/support/KilledMoveTest.h"

namespace tw::test {
namespace {

TEST_P(KilledMoveTest, aProgramThatIsKilledInAHundredMomentsOfAMoveHasLostNothing)
{
    expectNothingLostIn(100);
}

INSTANTIATE_TEST_SUITE_P(Ways, KilledMoveTest,
                         testing::Values("down", "down over", "up", "up over", "here over", "across", "across over",
                                         "between", "within", "within over", "within merging"));

} // namespace
} // namespace tw::test
