#include "TWCore/Archives/ArchiveListCommand.h"

#include "TWCore/Archives/ArchiveMemberCommand.h"
#include "TWCore/Archives/ReadableArchive.h"
#include "TWCore/Model/FileOperationError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ArchiveListCommand::Form;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

ArchiveTools const everyTool{.tar = "/bin/tar",
                             .tarKind = ArchiveTools::TarKind::gnu,
                             .bsdtar = "/bin/bsdtar",
                             .unzip = "/bin/unzip",
                             .sevenZip = "/bin/7zz"};
ArchiveCapability const plainHost{};
ArchiveCapability const plainHostWith7z{.sevenZip = "7z"};
ArchiveCapability const hostWithBsdTar{.usesBSDTar = true};

/// The text of what is thrown; empty if nothing is.
template <class Work>
std::string refusalText(Work const &work)
{
    try {
        work();
    } catch (FileOperationError::Unsupported const &refusal) {
        return refusal.detail;
    }
    return {};
}

std::string listingThere(ArchiveCapability const &capability, std::string const &archive,
                         ShellDialect dialect = ShellDialect::posix)
{
    return ArchiveListCommand::there(dialect, capability, "web1", archive).text;
}

TEST(ReadableArchiveTest, moreCanBeOpenedThanPacked)
{
    using enum ArchiveFamily;
    for (auto const *name : {"a.tar", "A.TGZ", "a.tar.bz2", "a.tbz", "a.tar.xz", "a.txz", "a.tar.zst"})
        EXPECT_EQ(readableArchive(name), tar) << name;
    for (auto const *name : {"a.zip", "A.JAR"})
        EXPECT_EQ(readableArchive(name), zip) << name;
    EXPECT_EQ(readableArchive("a.7z"), sevenZip);
    for (auto const *name : {"a.rar", "a.iso", "a.deb"})
        EXPECT_EQ(readableArchive(name), other) << name;
    for (auto const *name : {"", "a", "a.gz", "a.xz", "zip", "a.zip.txt", "a.odt"})
        EXPECT_EQ(readableArchive(name), std::nullopt) << name;
}

TEST(ArchiveListCommandTest, thisMachineListsWithTheProgramThatGivesDates)
{
    using Choice = std::pair<std::string, Form>;
    auto const formOf = [](ArchiveTools const &tools, std::string const &archive) {
        auto const command = ArchiveListCommand::here(tools, archive);
        EXPECT_EQ(command.arguments.back(), archive);
        return Choice(command.program, command.form);
    };
    EXPECT_EQ(formOf(everyTool, "/x/a.tar.gz"), Choice("/bin/tar", Form::gnuTar));
    EXPECT_EQ(formOf(everyTool, "/x/a.tar.xz"), Choice("/bin/bsdtar", Form::bsdTar));
    EXPECT_EQ(formOf(everyTool, "/x/a.zip"), Choice("/bin/bsdtar", Form::bsdTar));
    EXPECT_EQ(formOf(everyTool, "/x/a.deb"), Choice("/bin/bsdtar", Form::bsdTar));
    EXPECT_EQ(formOf(everyTool, "/x/a.7z"), Choice("/bin/7zz", Form::sevenZip));

    auto withoutBsd = everyTool;
    withoutBsd.bsdtar.clear();
    EXPECT_EQ(formOf(withoutBsd, "/x/a.tar.xz"), Choice("/bin/tar", Form::gnuTar));
    EXPECT_EQ(formOf(withoutBsd, "/x/a.zip"), Choice("/bin/7zz", Form::sevenZip));
    EXPECT_EQ(formOf(withoutBsd, "/x/a.rar"), Choice("/bin/7zz", Form::sevenZip));
    withoutBsd.sevenZip.clear();
    EXPECT_EQ(formOf(withoutBsd, "/x/a.zip"), Choice("/bin/unzip", Form::tar));

    EXPECT_EQ(formOf({.tar = "/bin/tar"}, "/x/a.tar"), Choice("/bin/tar", Form::tar));
}

TEST(ArchiveListCommandTest, whatIsMissingIsNamedWithItsPackage)
{
    auto const refusal = [](std::string const &archive) {
        return refusalText([&] { ArchiveListCommand::here({}, archive); });
    };
    EXPECT_EQ(refusal("/x/notes.txt"), "notes.txt is not an archive this can open");
    EXPECT_EQ(refusal("/x/a.7z"), "this computer has no 7-Zip to read a .7z. Install the package 7zip.");
    EXPECT_EQ(refusal("/x/a.zip"), "this computer has nothing to read a .zip. Install the package libarchive-tools.");
    EXPECT_EQ(refusal("/x/a.iso"), "this computer has nothing to read a.iso. Install the package libarchive-tools.");
    EXPECT_EQ(refusal("/x/a.tgz"), "this computer has no tar to read a.tgz. Install the package tar.");
    EXPECT_EQ(refusalText([] { listingThere(plainHost, "/x/a.zip"); }),
              "web1 cannot read this archive. Install 7zip there.");
    EXPECT_EQ(refusalText([] { listingThere(hostWithBsdTar, "/x/a.7z"); }),
              "web1 cannot read this archive. Install 7zip there.");
}

TEST(ArchiveListCommandTest, aHostListsWithWhatItHas)
{
    EXPECT_EQ(listingThere(plainHost, "/x/it's.tgz"), "tar --quoting-style=literal -tvf '/x/it'\\''s.tgz'");
    for (std::string const path : {"'/x/a.tar'", "'/x/a.zip'"}) {
        auto const listing = listingThere(hostWithBsdTar, path.substr(1, path.size() - 2));
        EXPECT_TRUE(listing.ends_with("; export TZ=UTC; tar --numeric-owner -tvf " + path + " 0>/dev/null")) << listing;
        EXPECT_THAT(listing, HasSubstr("export LC_ALL=$tw_l")) << "for names that are not ASCII";
    }
    EXPECT_EQ(listingThere(plainHostWith7z, "/x/a.zip"), "7z l -slt -ba -bso0 -- '/x/a.zip'");
    EXPECT_EQ(listingThere(plainHostWith7z, "/x/a.7z"), "7z l -slt -ba -bso0 -- '/x/a.7z'");
    EXPECT_EQ(listingThere(plainHostWith7z, "/C:/it's.7z", ShellDialect::powershell),
              "& 7z @('l','-slt','-ba','-bso0','--','C:/it''s.7z')");
    auto const windows = listingThere(hostWithBsdTar, "/C:/it's.zip", ShellDialect::powershell);
    EXPECT_THAT(windows, StartsWith("$psi = New-Object System.Diagnostics.ProcessStartInfo; $psi.FileName = 'tar'; "
                                    "$psi.Arguments = '-tvf \"C:/it''s.zip\"'; "));
    EXPECT_THAT(windows, HasSubstr("; $proc.WaitForExit(); [Console]::Out.Write($out)"));
}

TEST(ArchiveMemberCommandTest, aNameReachesItsProgramAsItIs)
{
    auto const here = [](std::string const &archive, std::string const &member) {
        return ArchiveMemberCommand::here(everyTool, archive, member).arguments;
    };
    EXPECT_THAT(here("/x/a.tgz", "-r*"), ElementsAre("-xOf", "/x/a.tgz", "--", "-r*"));
    EXPECT_THAT(here("/x/a.tgz", "a\\n"), ElementsAre("--no-unquote", "-xOf", "/x/a.tgz", "--", "a\\n"));
    EXPECT_THAT(here("/x/a.zip", "^[*]?\\$"), ElementsAre("-xOf", "/x/a.zip", "--", "\\^\\[\\*]\\?\\\\\\$"));
    EXPECT_THAT(here("/x/a.7z", "@x"), ElementsAre("x", "-so", "-bd", "-y", "-spd", "--", "/x/a.7z", "@x"));

    using ArchiveMemberCommand::Input;
    auto const there = [](ArchiveCapability const &host, std::string const &archive, Input input = Input::nothing) {
        return ArchiveMemberCommand::there(host, "web1", archive, "*", input);
    };
    EXPECT_EQ(there(plainHost, "/x/a.tgz"), "tar '-xOf' '/x/a.tgz' '--' '*'");
    EXPECT_EQ(there(plainHostWith7z, "/x/a.7z"), "7z 'x' '-so' '-bd' '-y' '-spd' '--' '/x/a.7z' '*'");
    EXPECT_THAT(there(hostWithBsdTar, "/x/a.zip"),
                AllOf(StartsWith("sh -c '"), HasSubstr("\\*"), EndsWith(" 0>/dev/null'")));
    EXPECT_THAT(there(hostWithBsdTar, "/x/a.zip", Input::password), testing::Not(HasSubstr("0>/dev/null")));
}

} // namespace
} // namespace tw::test
