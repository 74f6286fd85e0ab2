#include "TWCore/Model/Collation.h"

#include "TWCore/Model/MergeSort.h"
#include "tests/support/Listings.h"

namespace tw::test {

namespace {

constexpr char const *composed = "caf\xC3\xA9";    // with U+00E9
constexpr char const *decomposed = "cafe\xCC\x81"; // with "e" and U+0301

} // namespace

TEST(CollationTest, aListingOfAsciiNamesIsTrivial)
{
    auto const snapshot = listing("/", {file("a"), file(std::string(1000, '\x7F')), file("")});
    Collation const collation(snapshot);

    EXPECT_TRUE(collation.isTrivial());
    EXPECT_EQ(collation.key(0), std::nullopt);
}

TEST(CollationTest, theSharedOneAndThatOfAnEmptyListingAreTrivial)
{
    EXPECT_TRUE(Collation::trivial().isTrivial());
    EXPECT_EQ(Collation::trivial().key(12345), std::nullopt);
    EXPECT_EQ(&Collation::trivial(), &Collation::trivial());
    EXPECT_TRUE(Collation(DirectorySnapshot()).isTrivial());
}

TEST(CollationTest, aByteAboveAsciiIsFoundWhereverItLies)
{
    for (std::size_t position = 0; position < 600; ++position) {
        std::string name(600, 'a');
        name[position] = '\xFF';
        EXPECT_FALSE(Collation(listing("/", {file(name)})).isTrivial()) << position;
    }
}

TEST(CollationTest, onlyANameThatIsNotComposedHasAKey)
{
    auto const snapshot = listing("/", {file("plain"), file(composed), file(decomposed), file("bad\xFF"), file("")});
    Collation const collation(snapshot);

    EXPECT_FALSE(collation.isTrivial());
    EXPECT_EQ(collation.key(0), std::nullopt);
    EXPECT_EQ(collation.key(1), std::nullopt);
    EXPECT_EQ(collation.key(2), composed);
    EXPECT_EQ(collation.key(3), std::nullopt);
    EXPECT_EQ(collation.key(4), std::nullopt);
}

TEST(CollationTest, hangulSyllablesAreComposed)
{
    // U+1112 U+1161 U+11AB, the letters of one syllable, against U+D55C.
    auto const snapshot = listing("/", {file("\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB")});

    EXPECT_EQ(Collation(snapshot).key(0), "\xED\x95\x9C");
}

TEST(CollationTest, aDecomposedNameThatCannotBeDecodedIsRepairedInItsKeyOnly)
{
    auto const snapshot = listing("/", {file(std::string(decomposed) + "\xFF")});

    EXPECT_EQ(Collation(snapshot).key(0), std::string(composed) + "\xEF\xBF\xBD");
    EXPECT_EQ(names(snapshot), (std::vector<std::string>{std::string(decomposed) + "\xFF"}));
}

TEST(CollationTest, theTwoFormsOfANameOrderNextToEachOther)
{
    auto const snapshot = listing("/", {file(decomposed), file("cafz"), file(composed), file("caff")});
    Collation const collation(snapshot);
    std::vector<std::size_t> rows{0, 1, 2, 3};
    mergeSort(rows, [&](std::size_t a, std::size_t b) { return snapshot.nameIsOrderedBefore(a, b, collation); });

    EXPECT_EQ(rows, (std::vector<std::size_t>{3, 1, 0, 2}));
    EXPECT_FALSE(snapshot.nameIsOrderedBefore(0, 2, collation));
    EXPECT_FALSE(snapshot.nameIsOrderedBefore(2, 0, collation));
    EXPECT_TRUE(snapshot.nameIsOrderedBefore(0, 2, Collation::trivial())) << "without keys they stand apart";
}

TEST(CollationTest, strangeBytesInTheStorageChangeNoOrder)
{
    auto const storage = std::make_shared<std::string const>("ab\xC3\xA9");
    DirectorySnapshot const snapshot("/", storage, {{.nameOffset = 1, .nameLength = 1}, {.nameLength = 1}}, {}, false);
    Collation const collation(snapshot);

    EXPECT_FALSE(collation.isTrivial());
    EXPECT_EQ(collation.key(0), std::nullopt);
    EXPECT_TRUE(snapshot.nameIsOrderedBefore(1, 0, collation));
    EXPECT_FALSE(snapshot.nameIsOrderedBefore(0, 1, collation));
}

TEST(CollationDeathTest, theCollationOfAnotherListingStopsTheProcess)
{
    Collation const collation(listing("/", {file(composed)}));

    EXPECT_DEATH(collation.key(1), "outside the listing");
}

} // namespace tw::test
