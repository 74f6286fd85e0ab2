#include "tests/support/DamagedStoreTest.h"

namespace tw::test {
namespace {

class StoreDamageTest : public DamagedStoreTest {};

TEST_F(StoreDamageTest, aThousandFlippedBitsEndInListingsOrNone)
{
    auto const seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    EXPECT_GT(listingsAfterRandomChanges(seed, 1000), 1000) << "most of the file is whole each time";
}

} // namespace
} // namespace tw::test
