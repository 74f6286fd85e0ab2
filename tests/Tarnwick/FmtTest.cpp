#include "Tarnwick/Format/Fmt.h"

#include <ctime>
#include <limits>

namespace tw::test {

namespace {

/// The seconds since 1970 of a time on the machine's clock.
std::int64_t localTime(int year, int month, int day, int hour, int minute, int second)
{
    std::tm parts{};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    parts.tm_isdst = -1;
    return std::mktime(&parts);
}

std::string size(std::int64_t bytes)
{
    return Fmt::size(bytes, EntryKind::file);
}

Fmt::SplitName split(std::string_view name)
{
    return Fmt::splitExtension(name, Fmt::IsDirectory::no);
}

Fmt::SplitName whole(std::string_view name)
{
    return {.base = name, .extension = ""};
}

std::string word(std::string const &text)
{
    return std::string(1, '\0') + text;
}

} // namespace

TEST(FmtTest, aSizeBelowOneKilobyteIsPlain)
{
    EXPECT_EQ(size(0), "0");
    EXPECT_EQ(size(1), "1");
    EXPECT_EQ(size(1023), "1023");
    EXPECT_EQ(size(-5), "-5") << "a host may say anything";
}

TEST(FmtTest, aSizeHasOneDecimalBelowTen)
{
    EXPECT_EQ(size(1024), "1.0K");
    EXPECT_EQ(size(1536), "1.5K");
    EXPECT_EQ(size(9 * 1024), "9.0K");
    EXPECT_EQ(size(10'239), "10.0K");
    EXPECT_EQ(size(10'240), "10K");
    EXPECT_EQ(size(1024 * 1024 - 1), "1024K");
    EXPECT_EQ(size(1'048'576), "1.0M");
    EXPECT_EQ(size(3'435'973'837), "3.2G");
}

TEST(FmtTest, aSizeGoesUpToPetabytes)
{
    EXPECT_EQ(size(std::int64_t{1} << 30), "1.0G");
    EXPECT_EQ(size(std::int64_t{1} << 40), "1.0T");
    EXPECT_EQ(size(std::int64_t{1} << 50), "1.0P");
    EXPECT_EQ(size(std::int64_t{1} << 60), "1024P");
    EXPECT_EQ(size(std::numeric_limits<std::int64_t>::max()), "8192P");
    EXPECT_EQ(size(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}

TEST(FmtTest, onlyFoldersAndLinksHaveAWordForASize)
{
    EXPECT_EQ(Fmt::size(4096, EntryKind::directory), "<DIR>");
    EXPECT_EQ(Fmt::size(7, EntryKind::symlink), "<LNK>");
    for (auto const kind : {EntryKind::file, EntryKind::blockDev, EntryKind::charDev, EntryKind::fifo,
                            EntryKind::socket, EntryKind::unknown})
        EXPECT_EQ(Fmt::size(7, kind), "7");
}

TEST(FmtTest, aDateIsThatOfTheMachinesTimeZone)
{
    EXPECT_EQ(Fmt::date(localTime(2024, 2, 29, 23, 59, 59)), "2024-02-29 23:59");
    EXPECT_EQ(Fmt::date(localTime(2001, 1, 2, 3, 4, 5)), "2001-01-02 03:04");
    EXPECT_EQ(Fmt::date(localTime(1965, 7, 8, 9, 10, 11)), "1965-07-08 09:10");
}

TEST(FmtTest, anUnknownDateIsEmpty)
{
    EXPECT_EQ(Fmt::date(0), "");
    EXPECT_EQ(Fmt::date(std::numeric_limits<std::int64_t>::max()), "") << "beyond every calendar";
    EXPECT_EQ(Fmt::date(std::numeric_limits<std::int64_t>::min()), "");
}

TEST(FmtTest, twoTimesInOneMinuteShareACacheEntry)
{
    std::int64_t const minute = 28'401'000;
    EXPECT_EQ(&Fmt::date(minute * 60), &Fmt::date(minute * 60 + 59));
    EXPECT_NE(&Fmt::date(minute * 60), &Fmt::date(minute * 60 + 60));
}

TEST(FmtTest, theMinutesBefore1970AreTheirOwn)
{
    EXPECT_NE(Fmt::date(-1), Fmt::date(1));
    EXPECT_NE(Fmt::date(-60), Fmt::date(-61));
    EXPECT_EQ(&Fmt::date(-60), &Fmt::date(-1));
}

TEST(FmtTest, datesStayRightWhenTheCacheStartsAnew)
{
    auto const first = localTime(2010, 6, 1, 0, 0, 0);
    for (int i = 0; i < 10'000; ++i)
        ASSERT_EQ(Fmt::date(first + 60 * i).size(), 16U);
    EXPECT_EQ(Fmt::date(first), "2010-06-01 00:00");
    EXPECT_EQ(Fmt::date(first + 60), "2010-06-01 00:01");
}

TEST(FmtTest, aModeBeginsWithTheLetterOfItsKind)
{
    EXPECT_EQ(Fmt::mode(0755, EntryKind::directory), "drwxr-xr-x");
    EXPECT_EQ(Fmt::mode(0777, EntryKind::symlink), "lrwxrwxrwx");
    EXPECT_EQ(Fmt::mode(0660, EntryKind::blockDev), "brw-rw----");
    EXPECT_EQ(Fmt::mode(0620, EntryKind::charDev), "crw--w----");
    EXPECT_EQ(Fmt::mode(0600, EntryKind::fifo), "prw-------");
    EXPECT_EQ(Fmt::mode(0111, EntryKind::socket), "s--x--x--x");
    EXPECT_EQ(Fmt::mode(0644, EntryKind::file), "-rw-r--r--");
    EXPECT_EQ(Fmt::mode(0, EntryKind::unknown), "----------");
}

TEST(FmtTest, theSetIdAndStickyBitsOfAModeAreNotShown)
{
    EXPECT_EQ(Fmt::mode(07755, EntryKind::file), "-rwxr-xr-x");
    EXPECT_EQ(Fmt::mode(0xFE00, EntryKind::file), "----------");
}

TEST(FmtTest, theExtensionIsBehindTheLastDot)
{
    EXPECT_EQ(split("a.txt"), (Fmt::SplitName{.base = "a", .extension = "txt"}));
    EXPECT_EQ(split("archive.tar.gz"), (Fmt::SplitName{.base = "archive.tar", .extension = "gz"}));
    EXPECT_EQ(split(".config.json"), (Fmt::SplitName{.base = ".config", .extension = "json"}));
    EXPECT_EQ(split("a..b"), (Fmt::SplitName{.base = "a.", .extension = "b"}));
}

TEST(FmtTest, someNamesHaveNoExtension)
{
    for (std::string_view const name : {"", "plain", ".", ".profile", ".bashrc", "file.", "..", "a.b c d e f g h"})
        EXPECT_EQ(split(name), whole(name)) << name;
    EXPECT_EQ(Fmt::splitExtension("folder.d", Fmt::IsDirectory::yes), whole("folder.d"));
}

TEST(FmtTest, anExtensionHasAtMostTwelveCharacters)
{
    EXPECT_EQ(split("a.abcdefghijkl"), (Fmt::SplitName{.base = "a", .extension = "abcdefghijkl"}));
    EXPECT_EQ(split("a.abcdefghijklm"), whole("a.abcdefghijklm"));
}

TEST(FmtTest, theCharactersOfAnExtensionAreCountedAsAPersonDoes)
{
    auto const times = [](int count, std::string const &text) {
        std::string all;
        for (int i = 0; i < count; ++i)
            all += text;
        return all;
    };
    for (std::string const &character : {std::string("\xED\x95\x9C"),                         // a Hangul syllable
                                         std::string("\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB"), // its three letters
                                         std::string("e\xCC\x81"), std::string("\xFF")}) {
        auto const fits = "a." + times(12, character);
        auto const tooLong = "a." + times(13, character);
        EXPECT_EQ(split(fits).base, "a");
        EXPECT_EQ(split(fits).extension, times(12, character));
        EXPECT_EQ(split(tooLong), whole(tooLong));
    }
}

TEST(FmtTest, aFilesIconIsThatOfItsExtension)
{
    EXPECT_EQ(Fmt::iconKey("a.TXT", EntryKind::file), "txt");
    EXPECT_EQ(Fmt::iconKey("a.txt", EntryKind::file), "txt");
    EXPECT_EQ(Fmt::iconKey("a.\xC3\x89", EntryKind::file), "\xC3\xA9");
    EXPECT_EQ(Fmt::iconKey("dir", EntryKind::file), word("file"));
    EXPECT_EQ(Fmt::iconKey(".profile", EntryKind::file), word("file"));
}

TEST(FmtTest, whatIsNoFileHasTheIconOfItsKind)
{
    EXPECT_EQ(Fmt::iconKey("a.txt", EntryKind::directory), word("dir"));
    EXPECT_EQ(Fmt::iconKey("a.txt", EntryKind::symlink), word("link"));
    for (auto const kind :
         {EntryKind::blockDev, EntryKind::charDev, EntryKind::fifo, EntryKind::socket, EntryKind::unknown})
        EXPECT_EQ(Fmt::iconKey("a.txt", kind), word("special"));
}

TEST(FmtTest, noExtensionCollidesWithTheIconOfAKind)
{
    EXPECT_NE(Fmt::iconKey("a.dir", EntryKind::file), Fmt::iconKey("a", EntryKind::directory));
    EXPECT_NE(Fmt::iconKey("a.link", EntryKind::file), Fmt::iconKey("a", EntryKind::symlink));
    EXPECT_NE(Fmt::iconKey("a.file", EntryKind::file), Fmt::iconKey("a", EntryKind::file));
    EXPECT_NE(Fmt::iconKey("a.special", EntryKind::file), Fmt::iconKey("a", EntryKind::fifo));
}

} // namespace tw::test
