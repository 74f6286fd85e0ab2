#include "TWCore/Model/SnapshotCodec.h"

#include "TWCore/Model/ListingParser.h"
#include "tests/support/Listings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace tw::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::SizeIs;

using Time = std::chrono::system_clock::time_point;

constexpr std::size_t headerSize = 24;
constexpr std::size_t recordSize = 27;
constexpr Time fetchedAt{seconds(1'700'000'000)};

/// Bytes with NULs in them, from a literal.
template <std::size_t Size>
std::string bytes(char const (&literal)[Size])
{
    return std::string(literal, Size - 1);
}

DirectorySnapshot decoded(std::string const &blob)
{
    auto snapshot = SnapshotCodec::decode(blob, "/x");
    if (!snapshot)
        throw std::runtime_error("the blob does not decode");
    return *snapshot;
}

DirectorySnapshot roundTripped(DirectorySnapshot const &snapshot)
{
    return decoded(SnapshotCodec::encode(snapshot));
}

bool decodes(std::string_view blob)
{
    return SnapshotCodec::decode(blob, "/x").has_value();
}

DirectorySnapshot withStorage(std::string storage, std::vector<Entry> entries)
{
    return {"/x", std::make_shared<std::string const>(std::move(storage)), std::move(entries), fetchedAt, false};
}

/// Writes an integer over bytes of a blob, the lowest byte first.
void overwrite(std::string &blob, std::size_t at, std::uint64_t value, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i)
        blob.at(at + i) = static_cast<char>(value >> (8 * i));
}

std::string blobOfTwo()
{
    return SnapshotCodec::encode(listing("/x", {file("one", 1, 2), directory("three")}, fetchedAt));
}

TEST(SnapshotCodecTest, aListingIsTheseBytes)
{
    auto const snapshot = listing("/srv", {file("a.txt", 0x0102030405060708, -2), symlink("\xFF", -1, 0x7F)}, fetchedAt,
                                  Completeness::truncated);
    auto const expected = bytes("TWS1\x01\x01\x00\x00"
                                "\x02\x00\x00\x00"                  // entries
                                "\x06\x00\x00\x00"                  // bytes of names
                                "\x00\xF1\x53\x65\x00\x00\x00\x00") // 1,700,000,000
                          + bytes("\x00\x00\x00\x00\x05\x00\x00\x00"
                                  "\x08\x07\x06\x05\x04\x03\x02\x01"
                                  "\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"
                                  "\xA4\x01"
                                  "f") +
                          bytes("\x05\x00\x00\x00\x01\x00\x00\x00"
                                "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"
                                "\x7F\x00\x00\x00\x00\x00\x00\x00"
                                "\xFF\x01"
                                "l") +
                          "a.txt\xFF";
    EXPECT_EQ(SnapshotCodec::encode(snapshot), expected);
    EXPECT_EQ(names(decoded(expected)), names(snapshot));
}

TEST(SnapshotCodecTest, aListingWithoutEntriesIsItsHeader)
{
    auto const blob = SnapshotCodec::encode(listing("/x", {}, fetchedAt));
    EXPECT_THAT(blob, SizeIs(headerSize));
    EXPECT_EQ(decoded(blob).count(), 0U);
    EXPECT_THAT(SnapshotCodec::encode(DirectorySnapshot()), SizeIs(headerSize)) << "one without any storage";
}

TEST(SnapshotCodecTest, aListingBearsThePathThatItIsDecodedWith)
{
    EXPECT_EQ(SnapshotCodec::decode(blobOfTwo(), "/elsewhere")->path(), "/elsewhere");
}

TEST(SnapshotCodecTest, aListingOfAScanTakesOnlyItsOwnNamesAlong)
{
    auto const response = std::make_shared<std::string const>(bytes("d\t0\t1700000001.5\t755\tsub\0"
                                                                    "f\t10\t1700000000.5\t644\ta.txt\0"
                                                                    "f\t5\t3\t600\tsub/of another folder\0"
                                                                    "l\t7\t4\t777\tz\0"));
    auto const listings = ListingParser::parse(response, "/x", 2, fetchedAt, ListingParser::Completeness::whole);
    auto const &before = listings.at("/x");
    auto const after = roundTripped(before);

    EXPECT_EQ(*after.storage(), "suba.txtz");
    EXPECT_EQ(names(after), names(before));
    ASSERT_EQ(after.count(), before.count());
    for (std::size_t i = 0; i < after.count(); ++i) {
        auto expected = before.entries()[i];
        expected.nameOffset = after.entries()[i].nameOffset;
        EXPECT_EQ(after.entries()[i], expected);
    }
}

TEST(SnapshotCodecTest, anEntryWhoseNameIsEmptyOrLiesOutsideTheStorageIsLeftOut)
{
    auto const last = std::numeric_limits<std::uint32_t>::max();
    auto const blob = SnapshotCodec::encode(withStorage("abc", {{.nameOffset = 0, .nameLength = 1},
                                                                {.nameOffset = 2, .nameLength = 2},
                                                                {.nameOffset = last, .nameLength = last},
                                                                {.nameOffset = 3, .nameLength = 0},
                                                                {.nameOffset = 4, .nameLength = 0},
                                                                {.nameOffset = 1, .nameLength = 2}}));
    EXPECT_THAT(names(decoded(blob)), ElementsAre("a", "bc"));
    EXPECT_THAT(blob, SizeIs(headerSize + 2 * recordSize + 3)) << "only those that are kept are counted";
}

TEST(SnapshotCodecTest, aTruncatedListingStaysOne)
{
    EXPECT_TRUE(roundTripped(listing("/x", {file("a")}, fetchedAt, Completeness::truncated)).truncated());
    EXPECT_FALSE(roundTripped(listing("/x", {file("a")}, fetchedAt, Completeness::whole)).truncated());
}

TEST(SnapshotCodecTest, onlyAOneMeansTruncated)
{
    auto blob = blobOfTwo();
    blob[5] = 2;
    EXPECT_FALSE(decoded(blob).truncated());
    blob[5] = 1;
    EXPECT_TRUE(decoded(blob).truncated());
}

TEST(SnapshotCodecTest, theTimeLosesItsFractionTowardsZero)
{
    EXPECT_EQ(roundTripped(listing("/x", {}, fetchedAt + milliseconds(999))).fetchedAt(), fetchedAt);
    EXPECT_EQ(roundTripped(listing("/x", {}, Time(milliseconds(-1'999)))).fetchedAt(), Time(seconds(-1)));
}

TEST(SnapshotCodecTest, aTimeThatNoListingWasTakenAtMakesABlobDamaged)
{
    for (auto const time : {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max(),
                            std::int64_t{-9'000'000'000}, std::int64_t{9'000'000'000}}) {
        auto blob = blobOfTwo();
        overwrite(blob, 16, static_cast<std::uint64_t>(time), 8);
        EXPECT_FALSE(decodes(blob)) << time;
    }
}

TEST(SnapshotCodecTest, theReservedBytesAreIgnored)
{
    auto blob = blobOfTwo();
    overwrite(blob, 6, 0xFFFF, 2);
    EXPECT_TRUE(decodes(blob));
}

TEST(SnapshotCodecTest, aForeignBlobIsNothing)
{
    EXPECT_FALSE(decodes(""));
    EXPECT_FALSE(decodes("TWS1"));
    for (std::size_t at = 0; at < 4; ++at) {
        auto blob = blobOfTwo();
        blob[at] ^= 0x20;
        EXPECT_FALSE(decodes(blob)) << "magic, byte " << at;
    }
    for (char const version : {'\0', '\2'}) {
        auto blob = blobOfTwo();
        blob[4] = version;
        EXPECT_FALSE(decodes(blob)) << "version " << int{version};
    }
}

TEST(SnapshotCodecTest, aBlobThatWasCutAnywhereIsNothing)
{
    auto const blob = blobOfTwo();
    for (std::size_t length = 0; length < blob.size(); ++length) {
        // In memory of exactly that size, so that a read behind the end is seen by the sanitizer.
        std::vector<char> const cut(blob.begin(), blob.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_FALSE(decodes({cut.data(), cut.size()})) << length;
    }
}

TEST(SnapshotCodecTest, bytesBehindTheNamesAreIgnored)
{
    auto const snapshot = decoded(blobOfTwo() + "and more");
    EXPECT_THAT(names(snapshot), ElementsAre("one", "three"));
    EXPECT_EQ(*snapshot.storage(), "onethree");
}

TEST(SnapshotCodecTest, aHeaderThatClaimsMoreThanThereIsTakesNoMemoryForIt)
{
    for (std::size_t const at : {8U, 12U}) {
        auto blob = blobOfTwo();
        overwrite(blob, at, 0xFFFFFFFF, 4);
        EXPECT_FALSE(decodes(blob)) << "count at " << at;
    }
}

TEST(SnapshotCodecTest, aNameThatLiesOutsideTheNamesMakesABlobDamaged)
{
    struct Name {
        std::uint32_t offset, length;
        bool isInside;
    };

    for (auto const name : {Name{3, 6, false}, Name{9, 0, false}, Name{0xFFFFFFFF, 1, false},
                            Name{0xFFFFFFFF, 0xFFFFFFFF, false}, Name{7, 1, true}, Name{0, 8, true}}) {
        auto blob = blobOfTwo();
        overwrite(blob, headerSize + recordSize, name.offset, 4);
        overwrite(blob, headerSize + recordSize + 4, name.length, 4);
        EXPECT_EQ(decodes(blob), name.isInside) << name.offset << " " << name.length;
    }
}

TEST(SnapshotCodecTest, aNameThatNoFileCanHaveMakesABlobDamaged)
{
    /// Of two files, the second of which has that name.
    auto const withName = [](std::string const &name) {
        auto blob = SnapshotCodec::encode(listing("/x", {file("a"), file("b" + name)}, fetchedAt));
        overwrite(blob, headerSize + recordSize, 2, 4);
        overwrite(blob, headerSize + recordSize + 4, static_cast<std::uint32_t>(name.size()), 4);
        return blob;
    };
    for (auto const &name : {std::string(), std::string("."), std::string(".."), std::string("a/b"), std::string("/"),
                             std::string("a\0b", 3)})
        EXPECT_FALSE(decodes(withName(name))) << name;
    for (auto const *const name : {"...", ".a", "a.", "..a", " ", "\xFF"})
        EXPECT_TRUE(decodes(withName(name))) << name;
}

TEST(SnapshotCodecTest, anyFlippedBitLeavesNamesOfFilesOrNothing)
{
    auto const pristine = SnapshotCodec::encode(
        listing("/x", {file("a", 5, 7), directory("o"), symlink(".-"), file("a name with blanks")}, fetchedAt));
    for (std::size_t at = 0; at < pristine.size() * 8; ++at) {
        auto blob = pristine;
        blob[at / 8] = static_cast<char>(blob[at / 8] ^ (1 << at % 8));
        auto const found = SnapshotCodec::decode(blob, "/x");
        if (!found)
            continue;
        for (auto const &name : names(*found)) {
            EXPECT_FALSE(name.empty() || name == "." || name == "..") << "bit " << at;
            EXPECT_EQ(name.find_first_of(std::string_view("/\0", 2)), std::string::npos) << "bit " << at;
        }
    }
}

TEST(SnapshotCodecTest, aKindThatIsNoneIsUnknown)
{
    auto blob = blobOfTwo();
    blob[headerSize + 26] = 'z';
    EXPECT_EQ(decoded(blob).entries()[0].kind, EntryKind::unknown);
}

TEST(SnapshotCodecTest, theNamesOfADecodedListingMayOverlapAndLieInAnyOrder)
{
    auto blob = blobOfTwo();
    overwrite(blob, headerSize, 2, 4);
    EXPECT_THAT(names(decoded(blob)), ElementsAre("eth", "three"));
    EXPECT_EQ(decoded(blob).entries()[0].nameOffset, 2U) << "offsets stay as they are";
}

/// A listing as a scan could have brought it, and some that none could.
DirectorySnapshot randomListing(std::mt19937_64 &random)
{
    auto const below = [&](std::uint64_t limit) {
        return std::uniform_int_distribution<std::uint64_t>(0, limit - 1)(random);
    };
    std::string storage(below(2'000), '\0');
    // Any byte of a name, but for a slash, a NUL and a dot, of which alone no name is made.
    std::ranges::generate(storage, [&] { return static_cast<char>('0' + below(256 - '0')); });
    constexpr std::string_view kinds = "fdlbcps?";
    std::vector<Entry> entries(below(100));
    for (auto &entry : entries) {
        entry = {.nameOffset = static_cast<std::uint32_t>(below(storage.size() + 10)),
                 .nameLength = static_cast<std::uint32_t>(1 + below(60)),
                 .size = static_cast<std::int64_t>(random()),
                 .mtime = static_cast<std::int64_t>(random()),
                 .mode = static_cast<std::uint16_t>(random()),
                 .kind = static_cast<EntryKind>(kinds[below(kinds.size())])};
    }
    return {"/x", std::make_shared<std::string const>(std::move(storage)), std::move(entries),
            Time(milliseconds(below(4'000'000'000'000))), below(2) == 1};
}

TEST(SnapshotCodecTest, anyListingComesBackWithAllThatLiesInsideItsStorage)
{
    std::mt19937_64 random(20);
    for (int round = 0; round < 500; ++round) {
        auto const before = randomListing(random);
        auto const after = roundTripped(before);
        std::size_t index = 0;
        for (auto expected : before.entries()) {
            if (expected.nameOffset + expected.nameLength > before.storage()->size())
                continue;
            ASSERT_LT(index, after.count());
            auto const &entry = after.entries()[index++];
            EXPECT_EQ(after.nameBytes(entry), before.nameBytes(expected));
            expected.nameOffset = entry.nameOffset;
            EXPECT_EQ(entry, expected);
        }
        EXPECT_EQ(index, after.count());
        EXPECT_EQ(after.truncated(), before.truncated());
        EXPECT_EQ(after.fetchedAt(), std::chrono::floor<seconds>(before.fetchedAt()));
        EXPECT_EQ(SnapshotCodec::encode(after), SnapshotCodec::encode(before));
    }
}

TEST(SnapshotCodecDeathTest, namesThatTogetherNeedLongerOffsetsThanThereAreStopTheProcess)
{
    constexpr std::uint32_t mebibyte = 1U << 20U;
    std::vector<Entry> const entries(4'096, {.nameOffset = 0, .nameLength = mebibyte});
    auto const snapshot = withStorage(std::string(mebibyte, 'n'), entries);
    EXPECT_DEATH(SnapshotCodec::encode(snapshot), "bug: .*4 GiB of names");
}

} // namespace
} // namespace tw::test
