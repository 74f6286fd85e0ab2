#include "TWCore/Archives/DatedListing.h"

#include "TWCore/Archives/ArchiveListing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace tw::test {
namespace {

using namespace std::string_view_literals;
using testing::ElementsAre;

constexpr std::int64_t lastOfJanuary2024 = 1'706'704'496; // 12:34:56 UTC
constexpr std::chrono::system_clock::time_point march2024{std::chrono::seconds(1'709'290'000)};

ArchiveEntry datedFile(std::string path, std::int64_t size, std::int64_t mtime)
{
    return {.path = std::move(path), .size = size, .mtime = static_cast<double>(mtime)};
}

ArchiveEntry datedFolder(std::string path, std::int64_t mtime)
{
    return {.path = std::move(path), .isDirectory = true, .mtime = static_cast<double>(mtime)};
}

TEST(DatedListingTest, gnuTarGivesSecondsAndNamesOfAllBytes)
{
    auto const members =
        DatedListing::parseGnuTar("drwxr-xr-x 0/0               0 2024-01-31 12:34:56 ./\n"
                                  "-rw-r--r-- 1000/1000      1234 2024-01-31 12:34:56 ./a b\\n\\\\c\\303\\244\n"
                                  "-rw-r--r-- 0/0 5 2024-01-31 12:34:56.123456789 ./a -> b\n"
                                  "lrwxrwxrwx 0/0 0 2024-01-31 12:34:56 ./l -> target\n"
                                  "hrw-r--r-- 0/0 0 2024-01-31 12:34:56 ./h link to a b\n"
                                  "crw-r--r-- 0/0 1,3 2024-01-31 12:34:56 ./device\n"
                                  "drwxr-xr-x 0/0 0 1969-12-31 23:59:59 ./docs/\n"
                                  "tar: something else\n"
                                  "-rw-r--r-- 0/0 1 2024-02-31 12:34:56 ./no such day\n");

    EXPECT_TRUE(members.beginWithDot);
    EXPECT_THAT(members.entries, ElementsAre(datedFile("a b\n\\c\xC3\xA4", 1234, lastOfJanuary2024),
                                             datedFile("a -> b", 5, lastOfJanuary2024),
                                             datedFile("l", 0, lastOfJanuary2024), datedFile("h", 0, lastOfJanuary2024),
                                             datedFile("device", 0, lastOfJanuary2024), datedFolder("docs", -1)));
}

TEST(DatedListingTest, bsdTarGivesTheSizeAndTheNearestYear)
{
    auto const members = DatedListing::parseBsdTar("-rw-r--r--  0 1000   1000     1234 Jan 31 12:34 a.txt\n"
                                                   "-rw-r--r--  0 0      0           9 Jan 31  2019 b\\tc\n"
                                                   "-rw-r--r--  0 0      0           9 Dec 31 23:59 last year\n"
                                                   "drwxr-xr-x  0 0      0           0 Jan 31 12:34 d/\n"
                                                   "lrwxrwxrwx  0 0      0           0 Jan 31 12:34 l -> d\n"
                                                   "-rw-r--r--  0 0      0           9 Foo 31 12:34 no month\n",
                                                   march2024);

    EXPECT_FALSE(members.beginWithDot);
    EXPECT_THAT(members.entries,
                ElementsAre(datedFile("a.txt", 1234, lastOfJanuary2024 - 56), datedFile("b\tc", 9, 1'548'892'800),
                            datedFile("last year", 9, 1'704'067'140), datedFolder("d", lastOfJanuary2024 - 56),
                            datedFile("l", 0, lastOfJanuary2024 - 56)));
}

TEST(DatedListingTest, fractionsOfSecondsDoNotCostTheDate)
{
    auto const members = DatedListing::parseSevenZip("Path = a\nSize = 3\nModified = 2024-01-31 12:34:56.1234567\n\n"
                                                     "Path = d\nAttributes = D drwxr-xr-x\n");
    ASSERT_EQ(members.entries.size(), 2U);
    auto const there = static_cast<std::time_t>(members.entries[0].mtime);
    std::tm fields{};
    ::localtime_r(&there, &fields);
    EXPECT_EQ(std::tuple(fields.tm_year, fields.tm_mday, fields.tm_min, fields.tm_sec), std::tuple(124, 31, 34, 56));
    EXPECT_TRUE(members.entries[1].isDirectory);
}

/// The parser for hosts knows nothing of dates. All else that both can read is the same.
TEST(DatedListingTest, membersAndSizesAreThoseOfTheListingOfAHost)
{
    for (auto const line :
         {"-rw-r--r-- me/us 1234 2024-01-31 12:34 docs/a b.txt"sv, "drwxr-xr-x me/us 0 2024-01-31 12:34 docs/"sv,
          "-rw-r--r-- me/us 7 2024-01-31 12:34:56  leading"sv, "lrwxr-xr-x me/us 0 2024-01-31 12:34 l -> target"sv,
          "-rw-r--r-- me/us 1 2024-01-31 12:34 \\303\\244.txt"sv, "-rw-r--r-- me/us 1 2024-01-31 12:34 ./a/./b/"sv}) {
        auto const plain = ArchiveListing::parseTar(line);
        auto dated = DatedListing::parseGnuTar(line).entries;
        for (auto &entry : dated)
            entry.mtime = 0;
        EXPECT_EQ(dated, plain) << line;
    }
}

TEST(DatedListingTest, whatIsNoListingIsNothing)
{
    for (auto const text : {""sv, "\n\n"sv, "-"sv, "- - - - -"sv, "-rw 0/0 1 2024-01-31 12:34:56:78 a"sv,
                            "-rw 0/0 1 99999999999-01-31 12:34 a"sv, "-rw 0/0 1 2024-01-31 12:34"sv}) {
        EXPECT_TRUE(DatedListing::parseGnuTar(text).entries.empty()) << text;
        EXPECT_TRUE(DatedListing::parseBsdTar(text, march2024).entries.empty()) << text;
        EXPECT_TRUE(DatedListing::parseSevenZip(text).entries.empty()) << text;
    }
}

} // namespace
} // namespace tw::test
