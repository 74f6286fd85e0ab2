#include "tests/support/KilledMoveTest.h"

namespace tw::test {
namespace {

TEST_P(KilledMoveTest, aProgramThatIsKilledDuringAMoveHasLostNothing)
{
    expectNothingLostIn(6);
}

INSTANTIATE_TEST_SUITE_P(Ways, KilledMoveTest,
                         testing::Values("down", "up", "up over", "here over", "across", "between", "within",
                                         "within merging"));

} // namespace
} // namespace tw::test
