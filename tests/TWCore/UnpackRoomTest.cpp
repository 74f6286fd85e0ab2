#include "TWCore/Archives/UnpackRoom.h"

#include "TWCore/Archives/ArchiveFailure.h"
#include "TWCore/Archives/ArchivePasswordError.h"
#include "TWCore/Archives/ArchiveTooLarge.h"

#include <gtest/gtest.h>

#include <limits>

namespace tw::test {
namespace {

constexpr std::int64_t oneGiB = std::int64_t{1} << 30U;
constexpr auto largestNumber = std::numeric_limits<std::int64_t>::max();

TEST(UnpackRoomTest, moreThanTenTimesTheFreeSpaceOr100GiBIsTooMuch)
{
    EXPECT_FALSE(UnpackRoom::isTooMuch(100 * oneGiB, std::nullopt));
    EXPECT_TRUE(UnpackRoom::isTooMuch(100 * oneGiB + 1, std::nullopt));
    EXPECT_TRUE(UnpackRoom::isTooMuch(100 * oneGiB + 1, largestNumber));
    EXPECT_FALSE(UnpackRoom::isTooMuch(10 * oneGiB, oneGiB));
    EXPECT_TRUE(UnpackRoom::isTooMuch(10 * oneGiB + 10, oneGiB));
    EXPECT_TRUE(UnpackRoom::isTooMuch(largestNumber, 0));
}

TEST(UnpackRoomTest, aSumOfHostileSizesStaysANumber)
{
    std::vector<ArchiveEntry> entries{{.path = "a", .size = largestNumber}, {.path = "b", .size = 1}};
    EXPECT_EQ(UnpackRoom::sumOf(entries), largestNumber);
    entries = {{.path = "a", .size = -5}, {.path = "b", .size = 7}};
    EXPECT_EQ(UnpackRoom::sumOf(entries), 7);
}

TEST(UnpackRoomTest, theSizeOfAnArchiveBoundsItsContentInSomeFormats)
{
    EXPECT_EQ(UnpackRoom::boundOf("a.tar", 10), 10);
    EXPECT_EQ(UnpackRoom::boundOf("A.TGZ", 10), 10'320);
    EXPECT_EQ(UnpackRoom::boundOf("a.tar.gz", largestNumber / 2), largestNumber);
    EXPECT_EQ(UnpackRoom::boundOf("a.zip", 10), std::nullopt);
    EXPECT_EQ(UnpackRoom::boundOf("a.tar.xz", 10), std::nullopt);
}

TEST(UnpackRoomTest, theFreeSpaceOfAHostIsRead)
{
    constexpr auto header = "Filesystem 1024-blocks Used Available Capacity Mounted on\n";
    auto const rows = [](std::string const &row) { return UnpackRoom::freeIn(header + row + "\n"); };
    EXPECT_EQ(rows("/dev/sda1 1000 600 400 60% /"), 400 * 1024);
    EXPECT_EQ(rows("//nas/my share 9 1000 600 400 60% /mnt/my 5% disk"), 400 * 1024);
    EXPECT_EQ(rows("tmpfs 0 0 0 - /x"), std::nullopt);
    EXPECT_EQ(rows("x 1 1 99999999999999999999 1% /"), std::nullopt);
    EXPECT_EQ(UnpackRoom::freeIn("df: no such file"), std::nullopt);
    EXPECT_EQ(UnpackRoom::freeIn(""), std::nullopt);
}

TEST(UnpackRoomTest, sizesAreWords)
{
    EXPECT_EQ(UnpackRoom::inWords(7), "7 bytes");
    EXPECT_EQ(UnpackRoom::inWords(1536), "1.5 KiB");
    EXPECT_EQ(UnpackRoom::inWords(200 * oneGiB), "200 GiB");
    EXPECT_EQ(UnpackRoom::inWords(largestNumber), "7.9 EiB");
    EXPECT_STREQ(ArchiveTooLarge(200 * oneGiB, oneGiB).what(), "unpacked it takes 200 GiB, and 1.0 GiB are free");
}

/// The failure of a tool with these words, in the words for the user.
std::string failureFor(std::string_view words)
{
    try {
        std::rethrow_exception(ArchiveFailure::of("unpack", "/a.zip", words));
    } catch (ArchivePasswordError const &error) {
        return "password: " + std::string(error.what());
    } catch (std::exception const &error) {
        return error.what();
    }
}

TEST(ArchiveFailureTest, theWordsOfAToolSayWhetherItWantsAPassword)
{
    constexpr auto encrypted = "password: unpack failed on /a.zip: it is encrypted";
    EXPECT_EQ(failureFor("ERROR: Wrong password : t/a"), encrypted);
    EXPECT_EQ(failureFor("Cannot open encrypted archive. Wrong password?"), encrypted);
    EXPECT_EQ(failureFor("\n\nBreak signaled"), encrypted);
    EXPECT_EQ(failureFor("Enter passphrase:Enter passphrase:"), encrypted);
    EXPECT_EQ(failureFor("t/b: Too many incorrect passphrases: Unknown error -1"), encrypted);
    EXPECT_EQ(failureFor("skipping: t/b  unable to get password"),
              "not supported: it is encrypted, and unzip takes a password from a terminal only. Install the package "
              "7zip.");
    EXPECT_EQ(failureFor("exit 81"),
              "not supported: unzip does not know its encryption or compression. Install the package 7zip.");
    EXPECT_EQ(failureFor("no space left"), "unpack failed on /a.zip: no space left");
    EXPECT_EQ(ArchiveFailure::questionsIn("Enter passphrase:\nEnter passphrase:"), 2U);
    EXPECT_EQ(ArchiveFailure::questionsIn(""), 0U);
}

} // namespace
} // namespace tw::test
