#include "TWCore/Model/ListingParser.h"
#include "tests/support/Listings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace tw::test {
namespace {

using Stream = ListingParser::Completeness;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Parsed = std::map<std::string, DirectorySnapshot>;

/// A stream with NULs in it, from a literal.
template <std::size_t Size>
std::string stream(char const (&literal)[Size])
{
    return std::string(literal, Size - 1);
}

constexpr std::chrono::system_clock::time_point taken{std::chrono::seconds(1'700'000'000)};

Parsed parse(std::string bytes, int maxDepth = 1, std::string_view root = "/x", Stream stream = Stream::whole)
{
    return ListingParser::parse(std::make_shared<std::string const>(std::move(bytes)), root, maxDepth, taken, stream);
}

std::vector<std::string> paths(Parsed const &parsed)
{
    std::vector<std::string> result;
    for (auto const &[path, snapshot] : parsed) {
        EXPECT_EQ(snapshot.path(), path);
        result.push_back(path);
    }
    return result;
}

std::vector<std::string> truncatedPaths(Parsed const &parsed)
{
    std::vector<std::string> result;
    for (auto const &[path, snapshot] : parsed) {
        if (snapshot.truncated())
            result.push_back(path);
    }
    return result;
}

TEST(ListingStreamTest, anEmptyResponseIsAnEmptyRoot)
{
    auto const parsed = parse("");
    EXPECT_THAT(paths(parsed), ElementsAre("/x"));
    EXPECT_EQ(parsed.at("/x").count(), 0U);
    EXPECT_EQ(parsed.at("/x").fetchedAt(), taken);
}

TEST(ListingStreamTest, aRecordBecomesAnEntry)
{
    auto const parsed = parse(stream("f\t10\t1700000000.5\t644\ta.txt\0"));
    auto const &shown = parsed.at("/x");
    ASSERT_EQ(shown.count(), 1U);
    auto const entry = shown.entries()[0];
    EXPECT_EQ(shown.name(0), "a.txt");
    EXPECT_EQ(entry.size, 10);
    EXPECT_EQ(entry.mtime, 1'700'000'000);
    EXPECT_EQ(entry.mode, 0644);
    EXPECT_EQ(entry.kind, EntryKind::file);
}

TEST(ListingStreamTest, whatWouldLeadOutOfItsFolderIsNoEntry)
{
    auto const parsed = parse(stream("d\t1\t1\t755\t.\0d\t1\t1\t755\t..\0f\t1\t1\t644\t../x\0f\t1\t1\t644\ta/../x\0"
                                     "f\t1\t1\t644\ta//x\0f\t1\t1\t644\t...\0"),
                              3);
    EXPECT_THAT(paths(parsed), ElementsAre("/x"));
    ASSERT_EQ(parsed.at("/x").count(), 1U);
    EXPECT_EQ(parsed.at("/x").name(parsed.at("/x").entries()[0]), "...");
}

TEST(ListingStreamTest, aTrailingSlashOfTheRootIsNoPartOfIt)
{
    EXPECT_THAT(paths(parse(stream("f\t1\t1\t644\tsub/a\0"), 2, "/x///")), ElementsAre("/x", "/x/sub"));
}

TEST(ListingStreamTest, anEmptyFolderInsideTheReachIsKnownToBeEmpty)
{
    auto const record = stream("d\t0\t1\t755\tsub\0");
    EXPECT_THAT(paths(parse(record, 1)), ElementsAre("/x"));
    auto const deeper = parse(record, 2);
    EXPECT_THAT(paths(deeper), ElementsAre("/x", "/x/sub"));
    EXPECT_EQ(deeper.at("/x/sub").count(), 0U);
}

TEST(ListingStreamTest, theReachOfAScanCountsTheLevelsBelowItsRoot)
{
    auto const record = stream("d\t0\t1\t755\ta/b\0");
    EXPECT_THAT(paths(parse(record, 2)), ElementsAre("/x", "/x/a"));
    EXPECT_THAT(paths(parse(record, 3)), ElementsAre("/x", "/x/a", "/x/a/b"));
    EXPECT_THAT(paths(parse(record, 4)), ElementsAre("/x", "/x/a", "/x/a/b"));
    auto const below = stream("d\t0\t1\t755\ta/b/c\0");
    EXPECT_THAT(paths(parse(below, 3)), ElementsAre("/x", "/x/a/b"));
    EXPECT_THAT(paths(parse(below, 4)), ElementsAre("/x", "/x/a/b", "/x/a/b/c"));
}

TEST(ListingStreamTest, underTheRootOfAllNoSlashIsDoubled)
{
    EXPECT_THAT(paths(parse(stream("f\t1\t1\t644\ta/b.txt\0d\t1\t1\t755\tc\0"), 2, "/")), ElementsAre("/", "/a", "/c"));
}

TEST(ListingStreamTest, twoRunsOfOneFolderAreOneListingInStreamOrder)
{
    auto const parsed =
        parse(stream("f\t1\t1\t644\ta/1\0f\t1\t1\t644\tb/1\0f\t1\t1\t644\ttop\0f\t1\t1\t644\ta/2\0"), 2);
    EXPECT_THAT(names(parsed.at("/x/a")), ElementsAre("1", "2"));
    EXPECT_THAT(names(parsed.at("/x/b")), ElementsAre("1"));
    EXPECT_THAT(names(parsed.at("/x")), ElementsAre("top"));
}

TEST(ListingStreamTest, foldersOfWhichOneNameBeginsTheOtherAreToldApart)
{
    auto const parsed = parse(stream("f\t1\t1\t644\tab/1\0f\t1\t1\t644\ta/1\0f\t1\t1\t644\tabc/1\0"), 2);
    EXPECT_THAT(paths(parsed), ElementsAre("/x", "/x/a", "/x/ab", "/x/abc"));
}

TEST(ListingStreamTest, ofACutStreamTheLastFolderAndThoseAboveItAreTruncated)
{
    auto const bytes = stream("d\t0\t1\t755\ta\0f\t1\t1\t644\ta/1\0f\t1\t1\t644\tb/1\0f\t1\t1\t64");
    auto const parsed = parse(bytes, 2, "/x", Stream::truncated);
    // The root too: what stands behind "b" in it was never sent.
    EXPECT_THAT(truncatedPaths(parsed), ElementsAre("/x", "/x/b"));
    EXPECT_THAT(names(parsed.at("/x/b")), ElementsAre("1"));
    EXPECT_THAT(truncatedPaths(parse(bytes, 2)), IsEmpty());
}

TEST(ListingStreamTest, aFolderWhoseNameOnlyBeginsLikeTheCutOneIsWhole)
{
    auto const bytes = stream("f\t1\t1\t644\tb/1\0f\t1\t1\t644\tbc/1\0");
    EXPECT_THAT(truncatedPaths(parse(bytes, 2, "/x", Stream::truncated)), ElementsAre("/x", "/x/bc"));
    EXPECT_THAT(truncatedPaths(parse(bytes, 2, "/", Stream::truncated)), ElementsAre("/", "/bc"));
}

TEST(ListingStreamTest, aFolderThatACutWalkByLevelsDidNotReachIsNotKnownToBeEmpty)
{
    auto const level = stream("d\t0\t1\t755\ta\0d\t0\t1\t755\tb\0d\t0\t1\t755\tc\0d\t0\t1\t755\td\0f\t1\t1\t644\te\0");
    EXPECT_THAT(truncatedPaths(parse(level, 2, "/x", Stream::truncated)),
                ElementsAre("/x", "/x/a", "/x/b", "/x/c", "/x/d"));
    // The walk came to "b" and had gone through "a", where nothing was.
    auto const next = level + stream("f\t1\t1\t644\tb/1\0");
    EXPECT_THAT(truncatedPaths(parse(next, 2, "/x", Stream::truncated)), ElementsAre("/x", "/x/c", "/x/d"));
    EXPECT_THAT(truncatedPaths(parse(next, 2)), IsEmpty());
}

TEST(ListingStreamTest, aCutNameIsTheNameOfAnotherFileAndDropped)
{
    auto const bytes = stream("f\t1\t1\t644\twhole\0f\t1\t1\t644\tdocument.pd");
    EXPECT_THAT(names(parse(bytes, 1, "/x", Stream::truncated).at("/x")), ElementsAre("whole"));
    EXPECT_THAT(names(parse(bytes).at("/x")), ElementsAre("whole", "document.pd"));
}

TEST(ListingStreamTest, aStreamCutAtAnyByteLosesTheLastRecordOnly)
{
    auto const bytes = stream("f\t12\t1700000000.25\t644\tfirst\0f\t34\t1700000001\t600\tsecond\0");
    auto const firstRecord = bytes.find('\0') + 1;
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        auto const shown = parse(bytes.substr(0, length), 1, "/x", Stream::truncated).at("/x");
        EXPECT_EQ(shown.count(), length < firstRecord ? 0U : 1U) << "cut at " << length;
    }
}

TEST(ListingStreamTest, whatDoesNotBelongInANumberIsSkipped)
{
    auto const parsed = parse(stream("f\t1 2x3\t-5\t6a48\tn\0"));
    auto const entry = parsed.at("/x").entries()[0];
    EXPECT_EQ(entry.size, 123);
    EXPECT_EQ(entry.mtime, 5);
    EXPECT_EQ(entry.mode, 064) << "8 is no octal digit";
}

TEST(ListingStreamTest, numbersTooLargeAreCutToTheirFields)
{
    auto const parsed = parse(stream("f\t99999999999999999999999\t99999999999999999999999.9\t7777777777777777\tn\0"));
    EXPECT_EQ(parsed.at("/x").count(), 1U);
    EXPECT_EQ(parsed.at("/x").entries()[0].mode, 0xFFFF);
}

TEST(ListingStreamTest, anUnknownTypeIsUnknown)
{
    auto const parsed = parse(stream("x\t1\t1\t644\tn\0\t1\t1\t644\tm\0directory\t1\t1\t644\to\0"));
    auto const entries = parsed.at("/x").entries();
    EXPECT_EQ(entries[0].kind, EntryKind::unknown);
    EXPECT_EQ(entries[1].kind, EntryKind::unknown);
    EXPECT_EQ(entries[2].kind, EntryKind::directory) << "only the first byte counts";
}

TEST(ListingStreamTest, lineEndsAreSkippedBeforeARecordAndKeptInAName)
{
    auto const parsed = parse(stream("\r\n\nf\t1\t1\t644\ta\nb\0\r\nf\t1\t1\t644\t\tc\0\n"));
    EXPECT_THAT(names(parsed.at("/x")), ElementsAre("a\nb", "\tc"));
}

TEST(ListingStreamTest, recordsWithoutANameAreSkipped)
{
    auto const parsed = parse(stream("d\t1\t1\t755\t\0f\t1\t1\t644\tsub/\0f\t1\t1\t644\t/rooted\0"), 2);
    EXPECT_THAT(paths(parsed), ElementsAre("/x"));
    EXPECT_THAT(names(parsed.at("/x")), ElementsAre("rooted"));
}

TEST(ListingStreamTest, theSnapshotsShareTheResponseWithoutACopy)
{
    auto const response = std::make_shared<std::string const>(stream("f\t1\t1\t644\ta/1\0f\t1\t1\t644\tb/1\0"));
    auto const parsed = ListingParser::parse(response, "/x", 2, taken, Stream::whole);
    for (auto const &[path, snapshot] : parsed)
        EXPECT_EQ(snapshot.storage(), response);
}

TEST(ListingStreamTest, aFolderNameThatIsNoTextKeepsItsBytes)
{
    EXPECT_THAT(paths(parse(stream("f\t1\t1\t644\t\xff\xfe/1\0"), 2)), ElementsAre("/x", "/x/\xff\xfe"));
}

TEST(ListingStreamTest, anyBytesAtAllGiveListingsWhoseNamesLieInTheResponse)
{
    std::mt19937 random(20261121);
    std::string const alphabet = stream("\0\t\n\rfdl?0179./ax\xff");
    for (int round = 0; round < 3000; ++round) {
        std::string bytes;
        for (auto length = random() % 120; length > 0; --length)
            bytes += alphabet[random() % alphabet.size()];
        auto const parsed = parse(bytes, static_cast<int>(1 + random() % 5), "/x",
                                  random() % 2 == 0 ? Stream::whole : Stream::truncated);
        EXPECT_TRUE(parsed.contains("/x"));
        for (auto const &[path, snapshot] : parsed) {
            for (auto const &name : names(snapshot)) {
                EXPECT_FALSE(name.empty());
                EXPECT_EQ(name.find('/'), std::string::npos);
            }
        }
    }
}

} // namespace
} // namespace tw::test
