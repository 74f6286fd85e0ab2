#include "Tarnwick/Table/RowOrder.h"

#include "Tarnwick/Format/Fmt.h"
#include "tests/support/Listings.h"

#include <unicode/coll.h>

#include <numeric>
#include <random>

namespace tw::test {

namespace {

using RowNumbers = std::vector<std::uint32_t>;
using Names = std::vector<std::string>;

RowNumbers sorted(DirectorySnapshot const &snapshot, RowOrder order)
{
    RowNumbers rows(snapshot.count());
    std::iota(rows.begin(), rows.end(), 0U);
    sortRows(rows, snapshot, Collation(snapshot), order);
    return rows;
}

Names sortedNames(std::vector<ListedEntry> const &rows, RowOrder order)
{
    auto const snapshot = listing("/", rows);
    Names names;
    for (auto const row : sorted(snapshot, order))
        names.push_back(snapshot.name(row));
    return names;
}

/// The comparison of two rows as it is defined, one rule after the other.
class Comparison {
public:
    Comparison(DirectorySnapshot const &snapshot, RowOrder rowOrder)
        : listing(snapshot), collation(snapshot), order(rowOrder)
    {
        auto status = U_ZERO_ERROR;
        collator.reset(icu::Collator::createInstance(icu::Locale::getRoot(), status));
        collator->setStrength(icu::Collator::SECONDARY);
    }

    bool operator()(std::uint32_t a, std::uint32_t b) const
    {
        auto const &entryA = listing.entries()[a];
        auto const &entryB = listing.entries()[b];
        if (order.placement != FolderPlacement::mixed && entryA.isDirectory() != entryB.isDirectory())
            return (order.placement == FolderPlacement::top ? entryA : entryB).isDirectory();
        switch (order.key) {
        case SortKey::name:
            return order.ascending ? nameIsBefore(a, b) : nameIsBefore(b, a);
        case SortKey::ext:
            return extensionIsBefore(a, b);
        case SortKey::size:
            if (order.placement != FolderPlacement::mixed && entryA.isDirectory())
                return nameIsBefore(a, b);
            return entryA.size != entryB.size ? (entryA.size < entryB.size) == order.ascending : nameIsBefore(a, b);
        case SortKey::date:
            return entryA.mtime != entryB.mtime ? (entryA.mtime < entryB.mtime) == order.ascending : nameIsBefore(a, b);
        }
        return false;
    }

private:
    bool nameIsBefore(std::uint32_t a, std::uint32_t b) const { return listing.nameIsOrderedBefore(a, b, collation); }

    bool extensionIsBefore(std::uint32_t a, std::uint32_t b) const
    {
        auto const extensionA = extension(a);
        auto const extensionB = extension(b);
        if (extensionA == extensionB)
            return nameIsBefore(a, b);
        auto status = U_ZERO_ERROR;
        bool const aIsFirst = collator->compareUTF8(extensionA, extensionB, status) == UCOL_LESS;
        return aIsFirst == order.ascending;
    }

    std::string extension(std::uint32_t row) const
    {
        auto const &entry = listing.entries()[row];
        return std::string(
            Fmt::splitExtension(listing.nameBytes(entry), Fmt::IsDirectory{entry.isDirectory()}).extension);
    }

    DirectorySnapshot const &listing;
    Collation collation;
    RowOrder order;
    std::unique_ptr<icu::Collator> collator;
};

std::vector<RowOrder> allOrders()
{
    std::vector<RowOrder> orders;
    for (auto const key : {SortKey::name, SortKey::ext, SortKey::size, SortKey::date}) {
        for (auto const placement : {FolderPlacement::top, FolderPlacement::bottom, FolderPlacement::mixed}) {
            for (bool const ascending : {true, false})
                orders.push_back({.key = key, .ascending = ascending, .placement = placement});
        }
    }
    return orders;
}

std::vector<ListedEntry> randomRows(std::size_t count, std::string_view alphabet, std::mt19937 &random)
{
    auto const below = [&](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    };
    char const *const endings[] = {"", "", ".txt", ".TXT", ".Txt", ".c", ".zip", "."};
    std::vector<ListedEntry> rows;
    for (std::size_t i = 0; i < count; ++i) {
        std::string name(1 + below(12), '\0');
        for (auto &byte : name)
            byte = alphabet[below(alphabet.size())];
        name += endings[below(std::size(endings))];
        auto const size = static_cast<std::int64_t>(below(5)) - 1;
        auto const mtime = static_cast<std::int64_t>(below(4)) - 2;
        rows.push_back(below(4) == 0 ? directory(name, size, mtime) : file(name, size, mtime));
    }
    return rows;
}

} // namespace

TEST(RowOrderTest, noRowStandsBeforeOneThatTheComparisonPutsFirst)
{
    std::mt19937 random(1);
    for (std::string_view const alphabet : {"aAbB09-", "ab_^1",
                                            "a\xCC\x81"
                                            "e\xC3\xA9"}) {
        auto const snapshot = listing("/", randomRows(150, alphabet, random));
        for (auto const &order : allOrders()) {
            Comparison const isBefore(snapshot, order);
            auto const rows = sorted(snapshot, order);
            for (std::size_t i = 0; i < rows.size(); ++i) {
                for (std::size_t j = i + 1; j < rows.size(); ++j) {
                    // Extensions that differ in case only are each before the other when descending.
                    ASSERT_FALSE(isBefore(rows[j], rows[i]) && !isBefore(rows[i], rows[j]))
                        << snapshot.name(rows[j]) << " behind " << snapshot.name(rows[i]);
                }
            }
        }
    }
}

TEST(RowOrderTest, rowsThatNothingTellsApartKeepTheirOrder)
{
    std::vector<ListedEntry> const rows(40, file("same.txt", 1, 1));
    RowNumbers asListed(40);
    std::iota(asListed.begin(), asListed.end(), 0U);
    for (auto const &order : allOrders())
        EXPECT_EQ(sorted(listing("/", rows), order), asListed);
}

TEST(RowOrderTest, everyRowComesOutOnceWhateverItsName)
{
    std::mt19937 random(2);
    auto const snapshot = listing("/", randomRows(3000, "[\\]^_`aAbBzZ09\x80\xFF", random));
    RowNumbers asListed(snapshot.count());
    std::iota(asListed.begin(), asListed.end(), 0U);
    for (auto const &order : allOrders()) {
        auto rows = sorted(snapshot, order);
        std::ranges::sort(rows);
        ASSERT_EQ(rows, asListed);
    }
}

TEST(RowOrderTest, foldersStandAtTheTopWhateverTheDirection)
{
    std::vector<ListedEntry> const rows{file("new", 1, 9), directory("old", 1, 1), directory("young", 1, 5),
                                        file("aged", 1, 3)};

    EXPECT_EQ(sortedNames(rows, {.key = SortKey::date, .ascending = false}), (Names{"young", "old", "new", "aged"}));
    EXPECT_EQ(sortedNames(rows, {.key = SortKey::name, .ascending = false}), (Names{"young", "old", "new", "aged"}));
    EXPECT_EQ(sortedNames(rows, {.key = SortKey::name, .placement = FolderPlacement::bottom}),
              (Names{"aged", "new", "old", "young"}));
}

TEST(RowOrderTest, mixedFoldersSortAmongTheFilesByTheirSize)
{
    std::vector<ListedEntry> const rows{file("big", 9000), directory("folder", 4096), file("small", 10)};

    EXPECT_EQ(sortedNames(rows, {.key = SortKey::size, .placement = FolderPlacement::mixed}),
              (Names{"small", "folder", "big"}));
    EXPECT_EQ(sortedNames(rows, {.key = SortKey::size, .ascending = false, .placement = FolderPlacement::mixed}),
              (Names{"big", "folder", "small"}));
}

TEST(RowOrderTest, inAnOrderBySizeGroupedFoldersStayInAscendingOrderOfNames)
{
    std::vector<ListedEntry> const rows{directory("b", 1), file("x", 5), directory("c", 3), directory("a", 2),
                                        file("y", 7)};

    EXPECT_EQ(sortedNames(rows, {.key = SortKey::size}), (Names{"a", "b", "c", "x", "y"}));
    EXPECT_EQ(sortedNames(rows, {.key = SortKey::size, .ascending = false}), (Names{"a", "b", "c", "y", "x"}));
    EXPECT_EQ(sortedNames(rows, {.key = SortKey::size, .ascending = false, .placement = FolderPlacement::bottom}),
              (Names{"y", "x", "a", "b", "c"}));
}

TEST(RowOrderTest, equalSizesAndDatesAreInAscendingOrderOfNamesInBothDirections)
{
    std::vector<ListedEntry> const rows{file("c", 1, 1), file("B", 1, 1), file("a", 1, 1), file("d", 2, 2)};
    for (auto const key : {SortKey::size, SortKey::date}) {
        EXPECT_EQ(sortedNames(rows, {.key = key}), (Names{"a", "B", "c", "d"}));
        EXPECT_EQ(sortedNames(rows, {.key = key, .ascending = false}), (Names{"d", "a", "B", "c"}));
    }
}

TEST(RowOrderTest, sizesAndDatesOrderOverTheirWholeRange)
{
    auto const lowest = std::numeric_limits<std::int64_t>::min();
    auto const highest = std::numeric_limits<std::int64_t>::max();
    std::vector<ListedEntry> const rows{file("zero", 0, 0), file("highest", highest, highest), file("minus", -1, -1),
                                        file("lowest", lowest, lowest)};
    for (auto const key : {SortKey::size, SortKey::date}) {
        EXPECT_EQ(sortedNames(rows, {.key = key}), (Names{"lowest", "minus", "zero", "highest"}));
        EXPECT_EQ(sortedNames(rows, {.key = key, .ascending = false}), (Names{"highest", "zero", "minus", "lowest"}));
    }
}

TEST(RowOrderTest, namesOfOneExtensionAreInAscendingOrderInBothDirections)
{
    std::vector<ListedEntry> const rows{file("b.txt"), file("z.c"), file("a.txt"), file("y.c"), file("plain")};

    EXPECT_EQ(sortedNames(rows, {.key = SortKey::ext}), (Names{"plain", "y.c", "z.c", "a.txt", "b.txt"}));
    EXPECT_EQ(sortedNames(rows, {.key = SortKey::ext, .ascending = false}),
              (Names{"a.txt", "b.txt", "y.c", "z.c", "plain"}));
}

TEST(RowOrderTest, aFoldersNameHasNoExtensionToSortBy)
{
    std::vector<ListedEntry> const rows{directory("b.a"), directory("a.z"), file("c.m")};

    EXPECT_EQ(sortedNames(rows, {.key = SortKey::ext, .placement = FolderPlacement::mixed}),
              (Names{"a.z", "b.a", "c.m"}));
}

} // namespace tw::test
