#include "TWCore/Archives/ArchiveCommands.h"

#include "TWCore/Archives/ArchiveStem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace archiveCommands {
namespace {

using namespace ArchiveCommands;
using enum ShellDialect;
using testing::ElementsAre;
using Words = std::vector<std::string>;

ArchiveTools const gnuHost = toolsOf(ArchiveCapability::parse("gnutar,yes,no"));
ArchiveTools const bsdHost = toolsOf(ArchiveCapability::parse("bsdtar,no,7z"));
ArchiveTools const sevenZipHost = toolsOf(ArchiveCapability::parse("gnutar,yes,7zz"));

std::string textOf(std::optional<Call> const &call, ShellDialect dialect = posix)
{
    return call ? call->text(dialect) : "nothing";
}

TEST(ArchiveCommandsTest, aHostPacksWithWhatItHas)
{
    Words const names{"a b", "-r"};
    EXPECT_EQ(textOf(pack(gnuHost, ArchiveFormat::tarGz, "/o.tar.gz", "/d", names)),
              "tar -czf '/o.tar.gz' -C '/d' -- 'a b' '-r'");
    EXPECT_EQ(textOf(pack(bsdHost, ArchiveFormat::zip, "/o.zip", "/d", names)),
              "tar --format zip -cf '/o.zip' -C '/d' -- 'a b' '-r'");
    EXPECT_EQ(textOf(pack(sevenZipHost, ArchiveFormat::zip, "/o.zip", "/d", names)),
              "cd '/d' && 7zz a -tzip -bd -bso0 -y -spd -snl -- '/o.zip' 'a b' '-r'");
    EXPECT_EQ(textOf(pack(bsdHost, ArchiveFormat::sevenZip, "/o.7z", "/d", names)),
              "cd '/d' && 7z a -t7z -bd -bso0 -y -spd -snl -- '/o.7z' 'a b' '-r'");
    EXPECT_EQ(pack(gnuHost, ArchiveFormat::zip, "/o.zip", "/d", names), std::nullopt);
    EXPECT_EQ(pack(gnuHost, ArchiveFormat::sevenZip, "/o.7z", "/d", names), std::nullopt);
}

TEST(ArchiveCommandsTest, aHostUnpacksWithWhatItHas)
{
    EXPECT_EQ(textOf(unpack(gnuHost, ArchiveFamily::tar, "/a.tgz", "/d")), "tar -xf '/a.tgz' -C '/d'");
    EXPECT_EQ(textOf(unpack(bsdHost, ArchiveFamily::zip, "/a.zip", "/d")), "tar -xf '/a.zip' -C '/d'");
    EXPECT_EQ(textOf(unpack(sevenZipHost, ArchiveFamily::zip, "/a.zip", "/d")),
              "7zz x -bd -bso0 -y -spd -o'/d' -- '/a.zip'");
    EXPECT_EQ(textOf(unpack(gnuHost, ArchiveFamily::zip, "/a.zip", "/d")), "unzip -o -q '/a.zip' -d '/d'");
    EXPECT_EQ(unpack(gnuHost, ArchiveFamily::sevenZip, "/a.7z", "/d"), std::nullopt);
    EXPECT_EQ(textOf(extract(gnuHost, ArchiveFamily::tar, "/a.tgz", "/d", Words{"*", "b"}, "./")),
              "tar -xf '/a.tgz' -C '/d' -- './*' './b'");
    EXPECT_EQ(textOf(extract(bsdHost, ArchiveFamily::tar, "/a.tgz", "/d", Words{"*[a]\\"})),
              "tar -xf '/a.tgz' -C '/d' -- '\\*\\[a\\]\\\\'");
    EXPECT_EQ(textOf(extract(bsdHost, ArchiveFamily::sevenZip, "/a.7z", "/d", Words{"@x"})),
              "7z x -bd -bso0 -y -spd -o'/d' -- '/a.7z' '@x'");
    EXPECT_EQ(extract(gnuHost, ArchiveFamily::zip, "/a.zip", "/d", Words{"a"}), std::nullopt);
}

TEST(ArchiveCommandsTest, aWindowsHostGetsItsOwnPaths)
{
    ArchiveTools const windows = toolsOf(ArchiveCapability::parse("bsdtar,no,7z"));
    Words const names{"it's"};
    EXPECT_EQ(textOf(pack(windows, ArchiveFormat::tarGz, "/C:/o.tar.gz", "/C:/d", names), powershell),
              "& tar @('-czf','C:/o.tar.gz','-C','C:/d','--','it''s')");
    EXPECT_EQ(textOf(pack(windows, ArchiveFormat::sevenZip, "/C:/o.7z", "/C:/d", names), powershell),
              "Set-Location -LiteralPath 'C:/d'; & 7z "
              "@('a','-t7z','-bd','-bso0','-y','-spd','-snl','--','C:/o.7z','it''s')");
    EXPECT_EQ(textOf(unpack(windows, ArchiveFamily::zip, "/C:/a.zip", "/C:/d"), powershell),
              "& tar @('-xf','C:/a.zip','-C','C:/d')");
    EXPECT_EQ(textOf(extract(windows, ArchiveFamily::sevenZip, "/C:/a.7z", "/C:/d", names), powershell),
              "& 7z @('x','-bd','-bso0','-y','-spd','-oC:/d','--','C:/a.7z','it''s')");
}

TEST(ArchiveCommandsTest, aNameIsNoArchiveOfWhichMembersAreAdded)
{
    EXPECT_THAT(pack(bsdHost, ArchiveFormat::tarGz, "/o.tgz", "/d", Words{"@x"})->words(),
                ElementsAre("-czf", "/o.tgz", "-C", "/d", "--", "./@x"));
    EXPECT_EQ(textOf(packToOutput(gnuHost, Compression::gzip, "/d", Words{"a"})), "tar -czf - -C '/d' -- 'a'");
    EXPECT_EQ(textOf(unpackInput(gnuHost, Compression::none, "/d")), "tar -xf - -C '/d'");
}

TEST(ArchiveCommandsTest, aZipIsChangedBy7ZipOrByZip)
{
    Words const names{"[a]"};
    EXPECT_EQ(textOf(add(sevenZipHost, ArchiveFormat::zip, "/a.zip", "/d", names)),
              "cd '/d' && 7zz a -tzip -bd -bso0 -bsp0 -y -spd -snl -- '/a.zip' '[a]'");
    EXPECT_EQ(textOf(add(gnuHost, ArchiveFormat::zip, "/a.zip", "/d", names)),
              "cd '/d' && zip -q -r -y '/a.zip' -- '[a]'");
    EXPECT_EQ(textOf(remove(sevenZipHost, ArchiveFormat::sevenZip, "/a.7z", names)),
              "7zz d -bd -bso0 -bsp0 -y -spd -- '/a.7z' '[a]'");
    EXPECT_EQ(textOf(remove(gnuHost, ArchiveFormat::zip, "/a.zip", names)),
              "zip -q -d '/a.zip' -- '\\[a\\]' '\\[a\\]/*'");
    EXPECT_EQ(add(gnuHost, ArchiveFormat::sevenZip, "/a.7z", "/d", names), std::nullopt);
    EXPECT_EQ(remove(gnuHost, ArchiveFormat::sevenZip, "/a.7z", names), std::nullopt);
}

TEST(ArchiveStemTest, theEndingOfAnArchiveIsCut)
{
    for (auto const &[name, stem] :
         {std::pair("a.tar.gz", "a"), std::pair("A.ZIP", "A"), std::pair("notes.txt", "notes.txt"),
          std::pair("a.b.tar.bz2", "a.b"), std::pair("a.tar.xz", "a"), std::pair("a.tgz", "a"), std::pair("a.tar", "a"),
          std::pair("a.7z", "a"), std::pair(".zip", ".zip")})
        EXPECT_EQ(archiveStem(name), stem);
}

} // namespace
} // namespace archiveCommands
} // namespace tw::test
