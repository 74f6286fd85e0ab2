#include "TWEngine/Transfer/TarReader.h"

#include "TWEngine/Transfer/TarError.h"
#include "tests/support/TarArchive.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>

namespace tw::test {
namespace {

using testing::ElementsAre;
using MemberKind = TarHeader::Kind;

struct Read {
    std::vector<std::string> names;
    std::vector<TarMember> members;
    std::int64_t files = 0;
    bool isAtEnd = false;
};

Read readInPieces(std::string_view archive, std::size_t piece)
{
    Read read;
    TarReader reader([&read](TarMember const &member) {
        read.members.push_back(member);
        read.names.push_back(member.name);
    });
    for (std::size_t at = 0; at < archive.size(); at += piece)
        reader.take(archive.substr(at, piece));
    read.files = reader.files();
    read.isAtEnd = reader.isAtEnd();
    EXPECT_EQ(reader.position(), static_cast<std::int64_t>(archive.size()));
    return read;
}

Read readWhole(std::string_view archive)
{
    return readInPieces(archive, archive.size());
}

std::string refusal(std::string_view archive)
{
    try {
        readWhole(archive);
    } catch (TarError const &error) {
        return error.what();
    }
    return "it was read";
}

std::string outputOf(std::string const &command)
{
    std::string output;
    auto *const stream = ::popen(command.c_str(), "r");
    std::array<char, 4096> buffer{};
    while (auto const count = ::fread(buffer.data(), 1, buffer.size(), stream))
        output.append(buffer.data(), count);
    EXPECT_EQ(::pclose(stream), 0) << command;
    return output;
}

TEST(TarReaderTest, dataCanPassUnread)
{
    auto const archive = TarArchive::member({.name = "file", .data = std::string(1000, 'x')}) +
                         TarArchive::member({.name = "next"}) + TarArchive::end();
    std::vector<std::string> names;
    TarReader reader([&](TarMember const &member) { names.push_back(member.name); });
    EXPECT_EQ(reader.dataLeft(), 0);
    reader.take(archive.substr(0, 600));
    EXPECT_EQ(reader.dataLeft(), 1024 - (600 - 512));
    reader.skip(36);
    EXPECT_EQ(reader.files(), 0);
    reader.skip(reader.dataLeft());
    EXPECT_EQ(reader.files(), 1);
    EXPECT_EQ(reader.dataLeft(), 0);
    reader.take(archive.substr(512 + 1024));
    EXPECT_THAT(names, ElementsAre("file", "next"));
    EXPECT_TRUE(reader.isAtEnd());
    EXPECT_EQ(reader.position(), std::ssize(archive));
}

TEST(TarReaderTest, headersAreFoundHoweverTheArchiveIsCut)
{
    auto const archive = TarArchive::member({.name = "folder/", .kind = '5'}) +
                         TarArchive::member({.name = "folder/file", .data = std::string(1500, 'x')}) +
                         TarArchive::member({.name = "folder/empty"}) +
                         TarArchive::member({.name = "folder/link", .kind = '2', .link = "/etc"}) + TarArchive::end();
    for (std::size_t const piece : {1U, 7U, 511U, 512U, 513U, 100'000U}) {
        auto const read = readInPieces(archive, piece);
        EXPECT_THAT(read.names, ElementsAre("folder", "folder/file", "folder/empty", "folder/link"));
        EXPECT_EQ(read.files, 3);
        EXPECT_TRUE(read.isAtEnd);
    }
}

TEST(TarReaderTest, aFileCountsWhenItsLastByteHasPassed)
{
    auto const archive = TarArchive::member({.name = "file", .data = std::string(1000, 'x')});
    EXPECT_EQ(readWhole(archive.substr(0, archive.size() - 1)).files, 0);
    EXPECT_EQ(readWhole(archive).files, 1);
    EXPECT_FALSE(readWhole(archive).isAtEnd);
}

TEST(TarReaderTest, whatRealProgramsWriteIsReadInEveryFormat)
{
    TemporaryFolder folder;
    std::string const deep = "a/" + std::string(120, 'b') + "/" + std::string(120, 'c');
    std::filesystem::create_directories(folder.path(deep));
    folder.file(deep + "/file", std::string(5000, 'x'));
    folder.file("a/\xC3\xA4 '\n", "y");
    std::filesystem::create_hard_link(folder.path(deep + "/file"), folder.path("a/hard"));
    folder.link("a/soft", std::string(200, 't'));
    folder.file("a/sparse");
    std::filesystem::resize_file(folder.path("a/sparse"), 3'000'000);
    for (std::string const options :
         {"--format=gnu", "--format=pax", "--format=gnu -S", "--format=pax -S", "--format=pax --sparse-version=0.1 -S",
          "--format=pax --sparse-version=0.0 -S", "--format=oldgnu"}) {
        auto const read = readWhole(outputOf("tar -cf - " + options + " --sort=name -C " + folder.path() + " a"));
        EXPECT_TRUE(read.isAtEnd) << options;
        EXPECT_EQ(read.files, 5) << options;
        ASSERT_EQ(read.names.size(), 8U) << options;
        EXPECT_EQ(read.names[0], "a");
        EXPECT_EQ(read.names[3], deep + "/file") << options;
        EXPECT_EQ(read.names[4], "a/hard");
        EXPECT_EQ(read.members[4].kind, MemberKind::hardLink);
        EXPECT_EQ(read.members[4].linkTarget, deep + "/file");
        EXPECT_EQ(read.members[5].linkTarget, std::string(200, 't'));
        EXPECT_EQ(read.names[6], "a/sparse") << options;
        EXPECT_EQ(read.names[7], "a/\xC3\xA4 '\n");
    }
}

TEST(TarReaderTest, aPrefixBelongsToTheNameInUstarOnly)
{
    EXPECT_THAT(readWhole(TarArchive::member({.name = "b", .prefix = "a"})).names, ElementsAre("a/b"));
    EXPECT_THAT(readWhole(TarArchive::member({.name = "b", .magic = std::string("ustar  \0", 8), .prefix = "a"})).names,
                ElementsAre("b"));
}

TEST(TarReaderTest, aSizeInBase256IsRead)
{
    std::string size(12, '\0');
    size[0] = '\x80';
    size[11] = 3;
    auto const archive = TarArchive::header({.name = "file", .size = size}) + std::string(512, 'x') +
                         TarArchive::member({.name = "next"});
    EXPECT_THAT(readWhole(archive).names, ElementsAre("file", "next"));
    size[0] = '\xFF';
    EXPECT_EQ(refusal(TarArchive::header({.name = "file", .size = size})), "the stream is not a tar archive");
}

TEST(TarReaderTest, aSizeThatOctalDigitsCannotHoldIsRead)
{
    constexpr std::int64_t bytes = (std::int64_t{8} << 30U) + 1000;
    std::string base256(12, '\0');
    base256.front() = '\x80';
    for (std::size_t index = 0; index < 8; ++index)
        base256[11 - index] = static_cast<char>(bytes >> (8 * index));
    auto const attributes = TarArchive::paxRecord("size", std::to_string(bytes));
    TemporaryFolder const folder;
    std::filesystem::resize_file(folder.file("large"), static_cast<std::uintmax_t>(bytes));
    auto const front = [&](std::string const &format) {
        // tar is told that nobody reads the rest.
        return outputOf("tar -cf - --format=" + format + " -C " + folder.path() + " large 2>/dev/null | head -c 1536");
    };
    auto const inAttributes = TarArchive::member({.name = "x", .kind = 'x', .data = attributes}) +
                              TarArchive::header({.name = "large", .size = "00000000000"});
    for (auto const &archive : {TarArchive::header({.name = "large", .size = base256}), inAttributes,
                                front("gnu").substr(0, 512), front("pax")}) {
        std::vector<std::string> names;
        TarReader reader([&](TarMember const &member) { names.push_back(member.name); });
        reader.take(archive);
        EXPECT_THAT(names, ElementsAre("large"));
        constexpr std::int64_t padding = 24; // to a block
        EXPECT_EQ(reader.dataLeft(), bytes + padding);
        reader.skip(reader.dataLeft());
        EXPECT_EQ(reader.files(), 1);
    }
}

TEST(TarReaderTest, attributesChangeNameAndSize)
{
    auto const attributes = TarArchive::paxRecord("path", "long name") + TarArchive::paxRecord("size", "600") +
                            TarArchive::paxRecord("mtime", "1.5");
    auto const archive = TarArchive::member({.name = "x", .kind = 'x', .data = attributes}) +
                         TarArchive::header({.name = "short", .size = "00000000001"}) + std::string(1024, 'x') +
                         TarArchive::member({.name = "next"});
    EXPECT_THAT(readWhole(archive).names, ElementsAre("long name", "next"));
}

TEST(TarReaderTest, whatTwoProgramsCouldReadInTwoWaysIsRefused)
{
    auto const pax = [](std::string const &data, char kind = 'x') {
        return TarArchive::member({.name = "x", .kind = kind, .data = data});
    };
    auto const gnuName = TarArchive::member({.name = "././@LongLink", .kind = 'L', .data = std::string("name\0", 5)});
    auto const file = TarArchive::member({.name = "file"});
    constexpr auto twice = "the archive says two things about one member";
    EXPECT_EQ(refusal(gnuName + pax(TarArchive::paxRecord("path", "other")) + file), twice);
    EXPECT_EQ(refusal(gnuName + gnuName + file), twice);
    EXPECT_EQ(refusal(pax(TarArchive::paxRecord("path", "a"), 'g') + file), twice);
    EXPECT_EQ(refusal(gnuName + std::string(512, '\0') + file), twice);
    EXPECT_EQ(refusal(TarArchive::member({.name = "link", .kind = '1', .link = "file", .data = "data"})), twice);
    EXPECT_EQ(refusal(TarArchive::member({.name = "folder/", .kind = '5', .data = "data"})), twice);
    EXPECT_EQ(refusal(TarArchive::member({.name = "folder/", .data = "data"})), twice);
    constexpr auto unreadable = "the archive has attributes that cannot be read";
    EXPECT_EQ(refusal(pax(TarArchive::paxRecord("path", "a") + TarArchive::paxRecord("path", "b"))), unreadable);
    EXPECT_EQ(refusal(pax(TarArchive::paxRecord("path", std::string("a\0b", 3)))), unreadable);
    EXPECT_EQ(refusal(pax(TarArchive::paxRecord("size", "-1"))), unreadable);
    EXPECT_EQ(refusal(pax("99 path=a\n")), unreadable);
    EXPECT_EQ(refusal(pax("8 path=a\n")), unreadable);
    EXPECT_EQ(refusal(pax("path=a\n")), unreadable);
    EXPECT_EQ(refusal(TarArchive::member({.name = "x", .kind = 'V'})), "the archive has a member of an unknown kind");
    EXPECT_EQ(refusal(TarArchive::end() + file), "the archive goes on behind its end");
}

TEST(TarReaderTest, oneBlockOfZerosIsNoEnd)
{
    auto const read = readWhole(std::string(512, '\0') + TarArchive::member({.name = "file"}) + TarArchive::end());
    EXPECT_THAT(read.names, ElementsAre("file"));
    EXPECT_TRUE(read.isAtEnd);
}

TEST(TarReaderTest, aStreamOfOtherBytesIsRefused)
{
    EXPECT_EQ(refusal("Last login: Mon" + std::string(600, ' ')), "the stream is not a tar archive");
    auto archive = TarArchive::member({.name = "file"});
    archive[1] = 'o';
    EXPECT_EQ(refusal(archive), "the stream is not a tar archive");
}

TEST(TarReaderTest, aDescriptionHasALimit)
{
    EXPECT_EQ(refusal(TarArchive::header({.name = "x", .kind = 'L', .size = "77777777777"})),
              "the archive has a description that is too long");
}

} // namespace
} // namespace tw::test
