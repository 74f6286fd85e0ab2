#include "Tarnwick/Table/FoldedNames.h"

#include "tests/support/Listings.h"

#include <gtest/gtest.h>

#include <numeric>

namespace tw::test {
namespace {

/// The names of some rows, with all of them on show in their order.
class Names {
public:
    explicit Names(DirectorySnapshot const &listing, std::vector<std::uint32_t> const &rows)
        : folded(listing), places(FoldedNames::placesOf(rows, listing.count()))
    {
    }

    std::optional<std::size_t> find(std::string_view typed, std::size_t from) const
    {
        return folded.find(typed, from, places);
    }

private:
    FoldedNames const folded;
    std::vector<std::uint32_t> const places;
};

Names namesOf(std::vector<std::string> const &names)
{
    std::vector<ListedEntry> entries;
    for (auto const &name : names)
        entries.push_back(file(name));
    std::vector<std::uint32_t> rows(names.size());
    std::iota(rows.begin(), rows.end(), 0U);
    return Names(listing("/x", entries), rows);
}

TEST(FoldedNamesTest, aBeginningGoesBeforeAPartWhereverTheyAre)
{
    auto const names = namesOf({"core", "more", "reader", "index"});
    EXPECT_EQ(names.find("re", 0), 2U);
    EXPECT_EQ(names.find("or", 0), 0U);
    EXPECT_EQ(names.find("or", 1), 1U);
}

TEST(FoldedNamesTest, theSearchBeginsAtARowAndGoesRound)
{
    auto const names = namesOf({"readme", "b", "rest", "d"});
    EXPECT_EQ(names.find("re", 1), 2U);
    EXPECT_EQ(names.find("re", 2), 2U) << "the row itself counts";
    EXPECT_EQ(names.find("re", 3), 0U);
    EXPECT_EQ(names.find("adm", 3), 0U);
    EXPECT_EQ(names.find("re", 99), 0U);
}

TEST(FoldedNamesTest, nothingIsFoundWhereNothingIs)
{
    EXPECT_EQ(namesOf({"a", "b"}).find("x", 0), std::nullopt);
    EXPECT_EQ(namesOf({"a", "b"}).find("ab", 0), std::nullopt) << "a match never spans two names";
    EXPECT_EQ(namesOf({"a", "b"}).find("", 0), std::nullopt);
    EXPECT_EQ(namesOf({}).find("a", 0), std::nullopt);
}

TEST(FoldedNamesTest, caseDoesNotCountInAnyAlphabet)
{
    auto const names = namesOf({"x", "ÄRGER", "ΟΔΟΣ", "Привет", "Straße"});
    EXPECT_EQ(names.find("är", 0), 1U);
    EXPECT_EQ(names.find("οδος", 0), 2U);
    EXPECT_EQ(names.find("ПРИ", 0), 3U);
    EXPECT_EQ(names.find("STRASSE", 0), 4U);
    EXPECT_EQ(names.find("X", 3), 0U);
}

TEST(FoldedNamesTest, piecesOfLettersAreTheLetters)
{
    auto const names = namesOf({"e\xCC\x81t\xC3\xA9", "\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB"});
    EXPECT_EQ(names.find("été", 1), 0U);
    EXPECT_EQ(names.find("한", 0), 1U);
    EXPECT_EQ(names.find("e\xCC\x81te\xCC\x81", 0), 0U);
}

TEST(FoldedNamesTest, bytesThatAreNoTextHideNothing)
{
    auto const names = namesOf({std::string("a\0b", 3), "bad\xFF", "z"});
    EXPECT_EQ(names.find("b", 0), 1U) << "a zero byte begins no name";
    EXPECT_EQ(names.find("bad", 2), 1U);
    EXPECT_EQ(names.find("z", 0), 2U);
}

TEST(FoldedNamesTest, onlyTheRowsThatAreGivenAreSearchedInTheirOrder)
{
    auto const all = listing("/x", {file("a1"), file("b"), file("a2"), file("a3")});
    std::vector<std::uint32_t> const rows{3, 1, 0};
    Names const names(all, rows);
    EXPECT_EQ(names.find("a", 0), 0U);
    EXPECT_EQ(names.find("a", 1), 2U);
    EXPECT_EQ(names.find("a2", 0), std::nullopt);
}

} // namespace
} // namespace tw::test
