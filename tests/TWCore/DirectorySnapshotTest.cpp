#include "TWCore/Model/DirectorySnapshot.h"

#include "TWCore/Model/Collation.h"
#include "tests/support/Listings.h"

namespace tw::test {

namespace {

bool ordered(std::string_view a, std::string_view b)
{
    return DirectorySnapshot::ordered(a, b);
}

/// `first` orders before `second`, and not the other way round.
void expectOrder(std::string const &first, std::string const &second)
{
    EXPECT_TRUE(ordered(first, second)) << first << " before " << second;
    EXPECT_FALSE(ordered(second, first)) << second << " before " << first;
}

/// The rule of `ordered`, byte by byte, as plainly as it can be told.
bool orderedByTheBook(std::string_view a, std::string_view b)
{
    auto const fold = [](char byte) { return static_cast<unsigned char>(static_cast<unsigned char>(byte) | 0x20); };
    auto const isLetter = [](unsigned char byte) { return byte >= 'a' && byte <= 'z'; };
    std::optional<bool> tie;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        if (a[i] == b[i])
            continue;
        bool const rawLess = static_cast<unsigned char>(a[i]) < static_cast<unsigned char>(b[i]);
        if (!isLetter(fold(a[i])) || !isLetter(fold(b[i])))
            return rawLess;
        if (fold(a[i]) != fold(b[i]))
            return fold(a[i]) < fold(b[i]);
        if (!tie)
            tie = rawLess;
    }
    return a.size() != b.size() ? a.size() < b.size() : tie.value_or(false);
}

} // namespace

TEST(NameOrderTest, lettersOrderWithoutCase)
{
    expectOrder("a", "B");
    expectOrder("A", "b");
    expectOrder("a1", "B");
    expectOrder("readme", "Source");
}

TEST(NameOrderTest, upperCaseIsFirstWhenNothingElseDecides)
{
    expectOrder("B", "b");
    expectOrder("README", "readme");
    expectOrder("Ab", "aC");
    expectOrder("ab", "AC");
}

TEST(NameOrderTest, theFirstDifferenceInCaseDecides)
{
    expectOrder("Ab", "aB");
    expectOrder("aBc", "abC");
}

TEST(NameOrderTest, whenLengthsDifferTheShorterIsFirstWhateverTheCase)
{
    expectOrder("aB", "ab1");
    expectOrder("ab", "aB1");
    expectOrder("ab", "ABC");
}

TEST(NameOrderTest, aLetterAgainstAnythingElseComparesRawBytes)
{
    expectOrder("_", "a");
    expectOrder("Z", "_");
    expectOrder("1", "a");
    expectOrder("1", "A");
    expectOrder("a", "{");
    expectOrder("@", "A");
    expectOrder("A", "[");
    expectOrder("`", "a");
}

TEST(NameOrderTest, bytesAboveAsciiAreLast)
{
    expectOrder("z", "\x80");
    expectOrder("~", "\xC3\xA9");
    expectOrder("\xC3\xA8", "\xC3\xA9");
    expectOrder("\x80", "\xFF");
    expectOrder("zebra", "\xC3\xA9t\xC3\xA9");
}

TEST(NameOrderTest, anEmptyNameIsFirst)
{
    expectOrder("", "a");
    expectOrder("", std::string(1, '\0'));
    EXPECT_FALSE(ordered("", ""));
}

TEST(NameOrderTest, aNameIsNotBeforeItself)
{
    for (std::string const name : {"a", "README.md", "\xC3\xA9", "a name of more than one block of bytes"})
        EXPECT_FALSE(ordered(name, name)) << name;
}

TEST(NameOrderTest, aDifferenceBehindALongCommonPrefixIsFoundWhereverItLies)
{
    std::string const prefix = "IMG_20240229_235959_a_long_common_prefix";
    for (std::size_t length = 0; length <= prefix.size(); ++length) {
        auto const begin = prefix.substr(0, length);
        expectOrder(begin + "1", begin + "2");
        expectOrder(begin + "a.jpg", begin + "B.jpg");
        expectOrder(begin + "X.jpg", begin + "x.jpg");
        expectOrder(begin, begin + "x");
    }
}

TEST(NameOrderTest, isNotTransitiveAroundTheBytesBetweenTheTwoCases)
{
    expectOrder("ab", "AC");
    expectOrder("AC", "_");
    expectOrder("_", "ab");
}

TEST(NameOrderTest, agreesWithTheRuleForEveryPairOfBytesAtEveryPlaceOfABlock)
{
    for (int byteA = 0; byteA < 256; ++byteA) {
        for (int byteB = 0; byteB < 256; ++byteB) {
            for (std::size_t position : {0U, 3U, 7U, 8U, 9U}) {
                std::string a = "0123456789ab";
                auto b = a;
                a[position] = static_cast<char>(byteA);
                b[position] = static_cast<char>(byteB);
                b.back() = 'B';
                ASSERT_EQ(ordered(a, b), orderedByTheBook(a, b)) << byteA << " against " << byteB;
                ASSERT_EQ(ordered(b, a), orderedByTheBook(b, a)) << byteB << " against " << byteA;
            }
        }
    }
}

TEST(DirectorySnapshotTest, keepsWhatItWasMadeOf)
{
    auto const taken = std::chrono::system_clock::time_point(std::chrono::seconds(1'700'000'000));
    auto const snapshot = listing("/srv", {file("b", 7, 8), directory("a")}, taken, Completeness::truncated);

    EXPECT_EQ(snapshot.path(), "/srv");
    EXPECT_EQ(snapshot.count(), 2U);
    EXPECT_EQ(snapshot.fetchedAt(), taken);
    EXPECT_TRUE(snapshot.truncated());
    EXPECT_EQ(names(snapshot), (std::vector<std::string>{"b", "a"})); // not sorted
    EXPECT_EQ(snapshot.entries()[0].size, 7);
    EXPECT_EQ(snapshot.entries()[0].mtime, 8);
    EXPECT_TRUE(snapshot.entries()[1].isDirectory());
}

TEST(DirectorySnapshotTest, aDefaultOneIsEmpty)
{
    DirectorySnapshot const snapshot;

    EXPECT_EQ(snapshot.count(), 0U);
    EXPECT_TRUE(snapshot.entries().empty());
    EXPECT_FALSE(snapshot.truncated());
    EXPECT_EQ(snapshot.nameBytes(Entry{}), "");
}

TEST(DirectorySnapshotTest, aCopySharesRowsAndNames)
{
    auto const snapshot = listing("/", {file("a"), file("b")});
    auto const copy = snapshot; // NOLINT(performance-unnecessary-copy-initialization): the copy is what is tested

    EXPECT_EQ(copy.entries().data(), snapshot.entries().data());
    EXPECT_EQ(copy.storage(), snapshot.storage());
}

TEST(DirectorySnapshotTest, itsEntriesPointIntoAStorageThatMayHoldMore)
{
    auto const storage = std::make_shared<std::string const>("f 1 alpha\0d 2 beta\0");
    DirectorySnapshot const snapshot("/x", storage, {{.nameOffset = 4, .nameLength = 5}}, {}, false);

    EXPECT_EQ(snapshot.name(std::size_t{0}), "alpha");
    EXPECT_EQ(snapshot.storage(), storage);
}

TEST(DirectorySnapshotTest, aNameIsRepairedForDisplayAndKeptExactlyInItsBytes)
{
    auto const snapshot = listing("/", {file("a\xFF")});
    auto const &entry = snapshot.entries()[0];

    EXPECT_EQ(snapshot.name(entry), "a\xEF\xBF\xBD");
    EXPECT_EQ(snapshot.name(std::size_t{0}), "a\xEF\xBF\xBD");
    EXPECT_EQ(snapshot.nameBytes(entry), "a\xFF");
}

TEST(DirectorySnapshotTest, aChildPathHasOneSlashBetween)
{
    auto const path = [](std::string directoryPath, std::string name) {
        auto const snapshot = listing(std::move(directoryPath), {file(std::move(name))});
        return snapshot.childPath(snapshot.entries()[0]);
    };

    EXPECT_EQ(path("/", "name"), "/name");
    EXPECT_EQ(path("/a", "name"), "/a/name");
    EXPECT_EQ(path("/a/b", "c\xFF"), "/a/b/c\xFF");
}

TEST(DirectorySnapshotTest, ordersEntriesByTheirStoredNames)
{
    auto const snapshot = listing("/", {file("b"), file("B"), file("a")});
    auto const rows = snapshot.entries();

    EXPECT_TRUE(snapshot.nameIsOrderedBefore(rows[1], rows[0]));
    EXPECT_FALSE(snapshot.nameIsOrderedBefore(rows[0], rows[1]));
    EXPECT_TRUE(snapshot.nameIsOrderedBefore(rows[2], rows[1]));
    EXPECT_TRUE(snapshot.nameIsOrderedBefore(2, 0, Collation::trivial()));
    EXPECT_FALSE(snapshot.nameIsOrderedBefore(0, 0, Collation::trivial()));
}

TEST(DirectorySnapshotDeathTest, anEntryOutsideTheStorageStopsTheProcess)
{
    auto const snapshot = listing("/", {file("abc")});

    EXPECT_DEATH(snapshot.nameBytes({.nameOffset = 1, .nameLength = 3}), "outside the storage");
    EXPECT_DEATH(snapshot.name(Entry{.nameOffset = 4}), "outside the storage");
    EXPECT_DEATH(snapshot.childPath({.nameOffset = 0xFFFFFFFF, .nameLength = 0xFFFFFFFF}), "outside the storage");
    EXPECT_DEATH(snapshot.nameIsOrderedBefore(Entry{}, {.nameOffset = 2, .nameLength = 2}), "outside the storage");
}

TEST(DirectorySnapshotDeathTest, anIndexOutsideTheListingStopsTheProcess)
{
    auto const snapshot = listing("/", {file("abc")});

    EXPECT_DEATH(snapshot.name(std::size_t{1}), "outside its listing");
    EXPECT_DEATH(snapshot.nameIsOrderedBefore(0, 1, Collation::trivial()), "outside its listing");
}

} // namespace tw::test
