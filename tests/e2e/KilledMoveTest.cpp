#include "tests/support/KilledMoveTest.h"

namespace tw::test {
namespace {

TEST_F(KilledMoveTest, aProgramThatIsKilledDuringAMoveHasLostNothing)
{
    expectNothingLostIn(12);
}

} // namespace
} // namespace tw::test
