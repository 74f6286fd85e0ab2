#include "TWCore/Model/NameSorter.h"

#include "TWCore/Model/MergeSort.h"
#include "tests/support/Listings.h"

#include <numeric>
#include <random>

namespace tw::test {

namespace {

using Rows = std::vector<std::uint32_t>;

Rows allRows(DirectorySnapshot const &snapshot)
{
    Rows rows(snapshot.count());
    std::iota(rows.begin(), rows.end(), 0U);
    return rows;
}

Rows sorted(DirectorySnapshot const &snapshot, SortDirection direction)
{
    Collation const collation(snapshot);
    auto rows = allRows(snapshot);
    NameSorter(snapshot, collation).sort(rows, direction);
    return rows;
}

/// What a stable sort by the relation itself makes of it.
Rows sortedByTheRelation(DirectorySnapshot const &snapshot, SortDirection direction)
{
    Collation const collation(snapshot);
    auto rows = allRows(snapshot);
    mergeSort(rows, [&](std::uint32_t a, std::uint32_t b) {
        return direction == SortDirection::ascending ? snapshot.nameIsOrderedBefore(a, b, collation)
                                                     : snapshot.nameIsOrderedBefore(b, a, collation);
    });
    return rows;
}

void expectAsByTheRelation(DirectorySnapshot const &snapshot, std::string const &what)
{
    for (auto const direction : {SortDirection::ascending, SortDirection::descending}) {
        ASSERT_EQ(sorted(snapshot, direction), sortedByTheRelation(snapshot, direction))
            << what << (direction == SortDirection::ascending ? ", ascending" : ", descending");
    }
}

class RandomNames {
public:
    explicit RandomNames(unsigned seed) : random(seed) {}

    std::string name(std::string_view alphabet, std::size_t longest)
    {
        std::string text(below(longest + 1), '\0');
        for (auto &byte : text)
            byte = alphabet[below(alphabet.size())];
        return text;
    }

    std::size_t below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random); }

private:
    std::mt19937 random;
};

using namespace std::string_view_literals;

/// Byte classes within which the order of names is transitive.
constexpr std::string_view transitiveAlphabets[] = {
    "aAbBzZ019.-{~@\x80\xC3\xFF\0"sv, "abz[\\]^_`01. \xFF\0"sv, "ABZ[\\]^_`01. \xFF\0"sv, "aA"sv, "a\0"sv, "_"sv,
};

} // namespace

TEST(NameSorterTest, sortsAsTheRelationDoesWhateverTheNamesAreMadeOf)
{
    RandomNames random(1);
    for (auto const alphabet : transitiveAlphabets) {
        for (std::size_t const count : {0U, 1U, 2U, 16U, 17U, 60U, 500U}) {
            for (std::size_t const longest : {1U, 3U, 8U, 9U, 30U}) {
                std::vector<ListedEntry> rows;
                for (std::size_t i = 0; i < count; ++i)
                    rows.push_back(file(random.name(alphabet, longest)));
                expectAsByTheRelation(listing("/", rows), std::string(alphabet));
            }
        }
    }
}

TEST(NameSorterTest, sortsAsTheRelationDoesBehindCommonPrefixes)
{
    RandomNames random(2);
    std::vector<std::vector<std::string>> const prefixSets{
        {"IMG_2024"},
        {"IMG_20240229_"},
        {"IMG_2024", "DSC0", ""},
        {"a long prefix of several blocks, the same for many", "a long prefix of several blocks, the same for most"},
        {"CaseMix", "casemix", "CASEMIX-"},
    };
    for (auto const &prefixes : prefixSets) {
        for (auto const alphabet : {"0123456789"sv, "aAbB12."sv}) {
            std::vector<ListedEntry> rows;
            for (std::size_t i = 0; i < 400; ++i)
                rows.push_back(file(prefixes[random.below(prefixes.size())] + random.name(alphabet, 12)));
            expectAsByTheRelation(listing("/", rows), prefixes.front());
        }
    }
}

TEST(NameSorterTest, namesThatDifferOnlyFarBehindAreSorted)
{
    RandomNames random(3);
    std::vector<ListedEntry> rows;
    // More places where a few names part than the sorter looks at one by one.
    for (std::size_t i = 0; i < 300; ++i) {
        std::string name;
        for (int block = 0; block < 30; ++block)
            name += random.below(40) == 0 ? "bbbbbbbb" : "aaaaaaaa";
        rows.push_back(file(name));
    }
    expectAsByTheRelation(listing("/", rows), "far behind");
}

TEST(NameSorterTest, sortsByTheKeysOfDecomposedNames)
{
    std::vector<ListedEntry> rows;
    for (int i = 0; i < 20; ++i) {
        rows.push_back(file("cafe\xCC\x81 " + std::to_string(i)));
        rows.push_back(file("caf\xC3\xA9 " + std::to_string(i)));
        rows.push_back(file("cafz " + std::to_string(i)));
    }
    auto const snapshot = listing("/", rows);
    expectAsByTheRelation(snapshot, "decomposed");

    auto const order = sorted(snapshot, SortDirection::ascending);
    EXPECT_EQ(order[20], 0U);
    EXPECT_EQ(order[21], 1U) << "the composed twin follows at once";
}

TEST(NameSorterTest, rowsOfOneNameKeepTheirOrderInBothDirections)
{
    std::vector<ListedEntry> const rows(40, file("same"));
    auto const snapshot = listing("/", rows);

    EXPECT_EQ(sorted(snapshot, SortDirection::ascending), allRows(snapshot));
    EXPECT_EQ(sorted(snapshot, SortDirection::descending), allRows(snapshot));
}

TEST(NameSorterTest, sortsOnlyTheRowsThatItIsGiven)
{
    auto const snapshot = listing("/", {file("d"), file("c"), file("b"), file("a")});
    NameSorter sorter(snapshot, Collation::trivial());
    Rows rows{0, 2, 3};
    sorter.sort(rows, SortDirection::ascending);
    EXPECT_EQ(rows, (Rows{3, 2, 0}));

    Rows others{1, 0};
    sorter.sort(others, SortDirection::descending);
    EXPECT_EQ(others, (Rows{0, 1}));
}

TEST(NameSorterTest, whereTheOrderIsNotTransitiveEveryRowStillComesOutOnce)
{
    RandomNames random(4);
    for (auto const alphabet : {"[\\]^_`aAbBzZ09\x80\xFF"sv, "_aA"sv, "ab_AC"sv}) {
        for (std::size_t const longest : {1U, 4U, 20U}) {
            std::vector<ListedEntry> rows;
            for (std::size_t i = 0; i < 2000; ++i)
                rows.push_back(file((random.below(2) == 0 ? "IMG_2024" : "") + random.name(alphabet, longest)));
            auto const snapshot = listing("/", rows);
            for (auto const direction : {SortDirection::ascending, SortDirection::descending}) {
                auto order = sorted(snapshot, direction);
                std::ranges::sort(order);
                ASSERT_EQ(order, allRows(snapshot));
            }
        }
    }
}

TEST(NameSorterDeathTest, aRowOutsideTheListingStopsTheProcess)
{
    auto const snapshot = listing("/", {file("a")});
    Rows rows{1};

    EXPECT_DEATH(NameSorter(snapshot, Collation::trivial()).sort(rows, SortDirection::ascending),
                 "outside its listing");
}

} // namespace tw::test
