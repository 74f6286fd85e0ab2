#include "tests/support/KilledMoveTest.h"

namespace tw::test {
namespace {

TEST_F(KilledMoveTest, aProgramThatIsKilledInAHundredMomentsOfAMoveHasLostNothing)
{
    expectNothingLostIn(100);
}

} // namespace
} // namespace tw::test
