#include "tests/support/DamagedStoreTest.h"

namespace tw::test {
namespace {

class ListingStoreDamageTest : public DamagedStoreTest {};

TEST_F(ListingStoreDamageTest, anUndamagedStoreHasAllListings)
{
    EXPECT_EQ(listingsAfter(0, 0), 3);
}

TEST_F(ListingStoreDamageTest, aListingWithADamagedNameIsNotThereAndTheOthersAre)
{
    ASSERT_NE(shortBlob(), std::string::npos);
    auto const lengthOfFirstName = shortBlob() + 24 + 4;
    auto const firstName = shortBlob() + 24 + 3 * 27;
    EXPECT_EQ(listingsAfter(lengthOfFirstName, 1), 2) << "an empty name";
    EXPECT_EQ(listingsAfter(lengthOfFirstName, 0x80), 2) << "a name that ends behind the names";
    EXPECT_EQ(listingsAfter(firstName, 'a' ^ '/'), 2);
    EXPECT_EQ(listingsAfter(firstName, 'a' ^ '.'), 2);
    EXPECT_EQ(listingsAfter(firstName, 'a' ^ 'x'), 3) << "a name like any other";
}

TEST_F(ListingStoreDamageTest, aDamagedHeaderOfTheFileOrOfAListingIsHarmless)
{
    for (std::size_t offset = 0; offset < 32; ++offset)
        listingsAfter(offset, 0x01);
    for (std::size_t offset = 0; offset < 24; ++offset)
        EXPECT_GE(listingsAfter(shortBlob() + offset, 0x01), 2) << "the other listings are there";
}

TEST_F(ListingStoreDamageTest, anyFlippedBitOfTheFileEndsInListingsOrNone)
{
    EXPECT_GT(listingsAfterRandomChanges(1, 20), 20) << "most of the file is whole each time";
}

} // namespace
} // namespace tw::test
