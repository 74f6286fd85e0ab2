#include "tests/support/KilledMoveTest.h"

namespace tw::test {
namespace {

TEST_P(KilledMoveTest, aProgramThatIsKilledDuringAMoveHasLostNothing)
{
    expectNothingLostIn(12);
}

INSTANTIATE_TEST_SUITE_P(Ways, KilledMoveTest, testing::Values("down", "up", "over", "across"));

} // namespace
} // namespace tw::test
