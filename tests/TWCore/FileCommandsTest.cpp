#include "TWCore/Shell/FileCommands.h"

#include "TWCore/Shell/MoveCommand.h"
#include "tests/support/PowerShellLiterals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using enum ShellDialect;

std::vector<std::string> const two{"/C:/a b", "/C:/it's"};

TEST(FileCommandsTest, aFolderIsMade)
{
    EXPECT_EQ(FileCommands::makeDirectory(posix, "/srv/new"), "mkdir '/srv/new'");
    EXPECT_EQ(FileCommands::removeEmptyFolder(posix, "/srv/-it's"), "rmdir -- '/srv/-it'\\''s'");
    EXPECT_EQ(FileCommands::removeEmptyFolder(powershell, "/C:/it's"), "[IO.Directory]::Delete('C:/it''s')");
    EXPECT_EQ(FileCommands::makeDirectory(powershell, "/C:/new"),
              "New-Item -ItemType Directory -Path 'C:/new' -ErrorAction Stop | Out-Null");
}

TEST(FileCommandsTest, pathsAreDeletedInOneCommand)
{
    EXPECT_EQ(FileCommands::remove(posix, two), "rm -rf -- '/C:/a b' '/C:/it'\\''s'");
    EXPECT_EQ(FileCommands::remove(powershell, two),
              "Remove-Item -LiteralPath 'C:/a b','C:/it''s' -Recurse -Force -ErrorAction Stop");
}

TEST(FileCommandsTest, morePathsThanACommandTakesAreDeletedByOneRequest)
{
    std::vector<std::string> const long60(2, "/" + std::string(60'000, 'x'));
    auto const one = "'" + long60.front() + "'";
    EXPECT_EQ(FileCommands::remove(posix, long60),
              "tw=0\nrm -rf -- " + one + " || tw=1\nrm -rf -- " + one + " || tw=1\nexit $tw");
    auto const native =
        "Remove-Item -LiteralPath '" + long60.front().substr(1) + "' -Recurse -Force -ErrorAction Stop\n";
    EXPECT_EQ(FileCommands::remove(powershell, long60), native + native);
    EXPECT_EQ(FileCommands::fittingRequest(posix, long60).size(), 2U);
    std::vector<std::string> const many(40, long60.front());
    EXPECT_EQ(FileCommands::fittingRequest(posix, many).size(), 33U);
}

TEST(FileCommandsTest, pathsAreCopiedIntoAFolder)
{
    EXPECT_THAT(FileCommands::copy(posix, two, "/to"),
                testing::StartsWith("set -- '/C:/a b' '/C:/it'\\''s'; tw_to='/to'/\n"));
    EXPECT_EQ(FileCommands::copy(powershell, two, "/D:/to"),
              "Copy-Item -LiteralPath 'C:/a b','C:/it''s' -Destination 'D:/to' -Recurse -Force -ErrorAction Stop");
}

TEST(FileCommandsTest, pathsAreMeasuredTogether)
{
    EXPECT_EQ(FileCommands::measure(posix, two),
              "du -sk -- '/C:/a b' '/C:/it'\\''s' 2>/dev/null | awk '{s+=$1} END {print s+0}'");
    EXPECT_EQ(FileCommands::measure(powershell, two),
              "$t=0; foreach($i in @('C:/a b','C:/it''s')){ if(Test-Path -LiteralPath $i -PathType Container){ $t += "
              "(Get-ChildItem -LiteralPath $i -Recurse -File -Force | Measure-Object -Sum Length).Sum } else { $t += "
              "(Get-Item -LiteralPath $i).Length } }; [string][long]$t");
}

TEST(FileCommandsTest, aNameIsNeverAnOptionAndKeepsItsLineFeed)
{
    std::vector<std::string> const odd{"-rf", "/a\nb"};
    EXPECT_EQ(FileCommands::remove(posix, odd), "rm -rf -- '-rf' '/a\nb'");
}

TEST(FileCommandsTest, aWindowsHostReadsEachNameAsItIs)
{
    using testing::ElementsAre;
    for (auto const &name : namesForPowerShell) {
        auto const native = "C:/" + name;
        std::vector<std::string> const paths{"/" + native, "/D:/b"};
        auto const both = ElementsAre(native, "D:/b");
        EXPECT_THAT(powerShellLiterals(FileCommands::remove(powershell, paths)), both);
        EXPECT_THAT(powerShellLiterals(FileCommands::measure(powershell, paths)), both);
        EXPECT_THAT(powerShellLiterals(FileCommands::copy(powershell, paths, paths.front())),
                    ElementsAre(native, "D:/b", native));
        EXPECT_THAT(powerShellLiterals(FileCommands::makeDirectory(powershell, paths.front())), ElementsAre(native));
        std::vector<FileSystemWriter::Move> const moves{{paths.back(), paths.front()}};
        EXPECT_THAT(powerShellLiterals(MoveCommand::text(powershell, moves, FileSystemWriter::Existing::stays)),
                    ElementsAre(native, "File exists", "D:/b", native));
    }
}

TEST(FileCommandsTest, theRootOfAWindowsHostIsNoPathThere)
{
    EXPECT_EQ(FileCommands::makeDirectory(powershell, "/"),
              "New-Item -ItemType Directory -Path '' -ErrorAction Stop | Out-Null");
}

TEST(FileCommandsTest, aCommandTakesAsManyPathsAsFit)
{
    std::vector<std::string> const long40(4, "/" + std::string(40'000, 'x'));
    EXPECT_EQ(FileCommands::fittingFront(posix, long40).size(), 2U);
    std::vector<std::string> const tooLong(2, "/" + std::string(200'000, 'x'));
    EXPECT_EQ(FileCommands::fittingFront(posix, tooLong).size(), 1U);
    EXPECT_EQ(FileCommands::fittingFront(posix, two).size(), 2U);
    EXPECT_TRUE(FileCommands::fittingFront(posix, {}).empty());
}

TEST(FileCommandsTest, aTotalIsInKiBOrInBytes)
{
    EXPECT_EQ(FileCommands::totalSize(posix, "12\n"), 12288);
    EXPECT_EQ(FileCommands::totalSize(powershell, " 12\r\n"), 12);
}

TEST(FileCommandsTest, aTotalThatIsNoNumberIsZero)
{
    for (auto const *output : {"", "much", "1 2", "-5", "99999999999999999999", "9223372036854775807"})
        EXPECT_EQ(FileCommands::totalSize(posix, output), 0) << output;
}

} // namespace
} // namespace tw::test
