#include "TWCore/Archives/ArchiveListing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <ostream>

namespace tw {

void PrintTo(ArchiveEntry const &entry, std::ostream *stream)
{
    *stream << '"' << entry.path << "\" " << (entry.isDirectory ? "folder " : "file ") << entry.size << ' '
            << entry.mtime;
}

namespace test {
namespace {

using namespace ArchiveListing;
using testing::ElementsAre;
using testing::IsEmpty;

ArchiveEntry member(std::string path, std::int64_t size)
{
    return {.path = std::move(path), .size = size};
}

ArchiveEntry folderMember(std::string path)
{
    return {.path = std::move(path), .isDirectory = true};
}

TEST(ArchiveListingTest, linesOfGnuTarAreRead)
{
    EXPECT_THAT(parseTar("-rw-r--r-- me/us 1234 2024-01-31 12:34 docs/a b.txt\n"
                         "drwxr-xr-x me/us 0 2024-01-31 12:34 docs/\n"
                         "-rw-r--r-- me/us    7 2024-01-31 12:34:56 ./b\r\n"
                         "lrwxr-xr-x me/us 0 2024-01-31 12:34 l -> target\n"
                         "hrw-r--r-- me/us 0 2024-01-31 12:34 h link to docs/a b.txt"),
                ElementsAre(member("docs/a b.txt", 1234), folderMember("docs"), member("b", 7), member("l", 0),
                            member("h", 0)));
}

TEST(ArchiveListingTest, linesOfBsdTarAreReadButTheirSizeIsTheDay)
{
    EXPECT_THAT(parseTar("-rw-r--r--  0 me us  1234 Jan 31 12:34 a.txt\n"
                         "-rw-r--r--  0 me us  1234 Jan 31  2019 b.txt\n" // no time of day
                         "drwxr-xr-x  0 me us     0 Jan  1 00:00 d/\n"),
                ElementsAre(member("a.txt", 31), folderMember("d")));
}

TEST(ArchiveListingTest, whatIsNoLineOfAMemberIsLeftOut)
{
    EXPECT_THAT(parseTar(""), IsEmpty());
    EXPECT_THAT(parseTar("\n\r\n   \nshort 12:34\n"), IsEmpty());
    EXPECT_THAT(parseTar("tar: this is no member of it\n"), IsEmpty());
    EXPECT_THAT(parseTar("-rw-r--r-- 12:34 name\n"), IsEmpty()) << "three fields";
    EXPECT_THAT(parseTar("-rw-r--r-- me/us 5 2024-01-31 12:34 \n"), IsEmpty()) << "no name";
    EXPECT_THAT(parseTar("-rw-r--r-- me/us 5 2024-01-31 12:34 ./\n"), IsEmpty()) << "the folder itself";
    EXPECT_THAT(parseTar("-rw-r--r-- me/us 5 2024-01-31 1:2:3:4 name\n"), IsEmpty()) << "four groups";
}

TEST(ArchiveListingTest, aNameKeepsItsBlanksBehindTheFirst)
{
    EXPECT_THAT(parseTar("-rw-r--r-- me/us 5 2024-01-31 12:34   two \n"), ElementsAre(member("  two ", 5)));
    EXPECT_THAT(parseTar("-rw-r--r-- me/us 5 2024-01-31 12:34 at 10:20 o'clock\n"),
                ElementsAre(member("at 10:20 o'clock", 5)));
}

TEST(ArchiveListingTest, aSizeThatIsNoneIsZero)
{
    EXPECT_THAT(parseTar("-rw-r--r-- me/us 99999999999999999999 x 12:34 a\n"), ElementsAre(member("a", 0)));
    EXPECT_THAT(parseTar("crw-r--r-- me/us 1,3 2024-01-31 12:34 null\n"), ElementsAre(member("null", 0)));
}

TEST(ArchiveListingTest, escapedNamesAreReadByteByByte)
{
    EXPECT_EQ(unescape("\\303\\244.txt"), "\xC3\xA4.txt");
    EXPECT_EQ(unescape("a\\\\b"), "a\\b");
    EXPECT_EQ(unescape("\\400 \\38 \\n \\"), "\\400 \\38 \\n \\");
    EXPECT_EQ(unescape("\\\\101"), "\\101") << "a backslash, and not an A";
    EXPECT_EQ(unescape("plain"), "plain");
}

TEST(ArchiveListingTest, pathsLoseWhatSaysNothing)
{
    EXPECT_EQ(normalise("./a/./b/"), "a/./b");
    EXPECT_EQ(normalise("././//a//"), "a");
    EXPECT_EQ(normalise("/"), "");
    EXPECT_EQ(normalise("dir\\file"), "dir/file");
    EXPECT_EQ(normalise("dir/na\\me"), "dir/na\\me") << "a backslash of a name";
    EXPECT_EQ(normalise("../x"), "../x");
}

/// The time zone of the process, for as long as this lives.
class ZoneForTest {
public:
    explicit ZoneForTest(char const *zone)
    {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }

    ~ZoneForTest()
    {
        ::unsetenv("TZ");
        ::tzset();
    }
};

TEST(ArchiveListingTest, blocksOf7ZipAreRead)
{
    ZoneForTest const zone("UTC-2"); // two hours east of Greenwich
    EXPECT_THAT(parse7z("Path = docs\nFolder = +\nSize = 4096\nModified = 2024-01-31 12:34:56\n\n"
                        "Path = docs/a = b.txt\nSize = 1234\nModified = 2024-01-31 12:34:56.1234567\nCRC =\n\n"
                        "Path = d1\nSize = 1\nAttributes = D\n\nPath = d2\nAttributes = A D_\r\n\n"
                        "Path = bad\nSize = much\nAttributes = A\nModified = 2024-13-31 12:34:56"),
                ElementsAre(ArchiveEntry{"docs", true, 0, 1706697296}, member("docs/a = b.txt", 1234),
                            folderMember("d1"), folderMember("d2"), member("bad", 0)));
}

TEST(ArchiveListingTest, anEmptyListingOf7ZipHasNoMembers)
{
    EXPECT_THAT(parse7z(""), IsEmpty());
    EXPECT_THAT(parse7z("Size = 5\nAttributes = D\n"), IsEmpty()) << "of no member";
    EXPECT_THAT(parse7z("Path = ./\nSize = 5\n"), IsEmpty());
}

} // namespace
} // namespace test
} // namespace tw
