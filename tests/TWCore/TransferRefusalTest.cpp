#include "TWCore/Provider/TransferRefusal.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using enum TransferRefusal::Reason;
using enum TransferRefusal::Places;
using enum TransferRefusal::Naming;
using State = FolderFacts::State;

/// Folders of one place: "/" is 1, "/a" 2, "/a/b" 3, "/c" 4. Names have numbers of their own.
FolderFacts folder(std::string path, std::vector<std::uint64_t> way)
{
    FolderFacts facts{.state = State::present, .realPath = std::move(path)};
    for (auto const inode : way)
        facts.way.push_back({.device = 1, .inode = inode});
    return facts;
}

FolderFacts::Occupant entry(std::string name, EntryKind kind, std::optional<std::uint64_t> inode)
{
    FolderFacts::Occupant occupant{.name = std::move(name), .kind = kind};
    if (inode)
        occupant.identity = FileIdentity{.device = 1, .inode = *inode};
    return occupant;
}

class TransferRefusalTest : public testing::Test {
protected:
    std::optional<TransferRefusal> refusal(TransferRefusal::Places places = same,
                                           TransferRefusal::Naming naming = kept) const
    {
        return TransferRefusal::of(source, target, places, naming);
    }

    FolderFacts source = folder("/", {1});
    FolderFacts target = folder("/c", {4, 1});
};

TEST_F(TransferRefusalTest, anOrdinaryCopyIsNotRefused)
{
    source.taken = {entry("a", EntryKind::directory, 2), entry("f", EntryKind::file, 9)};
    EXPECT_EQ(refusal(), std::nullopt);
}

TEST_F(TransferRefusalTest, aTargetMustBeAFolder)
{
    target = {.state = State::missing};
    EXPECT_EQ(refusal(), TransferRefusal{targetIsMissing});
    EXPECT_EQ(refusal(different), TransferRefusal{targetIsMissing});
    target = {.state = State::notAFolder};
    EXPECT_EQ(refusal(), TransferRefusal{targetIsNoFolder});
}

TEST_F(TransferRefusalTest, aFolderDoesNotGoIntoItselfOrBelow)
{
    source.taken = {entry("f", EntryKind::file, 9), entry("a", EntryKind::directory, 2)};
    target = folder("/x/y", {2, 1});
    EXPECT_EQ(refusal(), (TransferRefusal{intoItself, "a"}));
    target = folder("/a/b", {3, 2, 1});
    EXPECT_EQ(refusal(), (TransferRefusal{intoItself, "a"}));
    EXPECT_EQ(refusal(same, renamed), (TransferRefusal{intoItself, "a"}));
}

TEST_F(TransferRefusalTest, aPlaceWithoutIdentitiesGoesByItsRealPaths)
{
    source = {.state = State::present, .realPath = "/C:/x", .taken = {entry("a", EntryKind::directory, {})}};
    for (auto const *path : {"/C:/x/a", "/C:/x/a/b"}) {
        target = {.state = State::present, .realPath = path};
        EXPECT_EQ(refusal(), (TransferRefusal{intoItself, "a"})) << path;
    }
    target.realPath = "/C:/x/ab";
    EXPECT_EQ(refusal(), std::nullopt);
    target.realPath = "/C:/x";
    EXPECT_EQ(refusal(), (TransferRefusal{ontoItself, "a"}));
}

TEST_F(TransferRefusalTest, aFileDoesNotGoOntoItself)
{
    source.taken = {entry("f", EntryKind::file, 9)};
    target = folder("/other/path/of/it", {1});
    EXPECT_EQ(refusal(), (TransferRefusal{ontoItself, "f"}));
    EXPECT_EQ(refusal(same, renamed), std::nullopt);
}

TEST_F(TransferRefusalTest, anotherNameOfAFileIsTheFileItself)
{
    source.taken = {entry("f", EntryKind::file, 9)};
    target.taken = {entry("f", EntryKind::file, 9)};
    EXPECT_EQ(refusal(), (TransferRefusal{ontoItself, "f"}));
    target.taken = {entry("f", EntryKind::file, 10)};
    EXPECT_EQ(refusal(), std::nullopt);
}

TEST_F(TransferRefusalTest, theNumbersOfTwoPlacesMeanNothingToEachOther)
{
    source.taken = {entry("a", EntryKind::directory, 2)};
    target = folder("/a", {2, 1});
    EXPECT_EQ(refusal(different), std::nullopt);
}

} // namespace
} // namespace tw::test
