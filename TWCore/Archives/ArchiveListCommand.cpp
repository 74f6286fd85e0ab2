#include "TWCore/Archives/ArchiveListCommand.h"

#include "TWCore/Archives/ArchiveListing.h"
#include "TWCore/Archives/BsdTarThere.h"
#include "TWCore/Archives/DatedListing.h"
#include "TWCore/Archives/ReadableArchive.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/WindowsPath.h"
#include "TWCore/Shell/ShellLiteral.h"

#include <array>

namespace tw::ArchiveListCommand {

namespace {

std::string lastComponent(std::string const &path)
{
    return path.substr(path.rfind('/') + 1);
}

ArchiveFamily familyOf(std::string const &archive)
{
    auto const family = readableArchive(lastComponent(archive));
    if (!family)
        throw FileOperationError::Unsupported(lastComponent(archive) + " is not an archive this can open");
    return *family;
}

Here withSevenZip(ArchiveTools const &tools, std::string const &archive)
{
    return {tools.sevenZip, {"l", "-slt", "-ba", "-bso0", "--", archive}, Form::sevenZip};
}

Here withBsdTar(ArchiveTools const &tools, std::string const &archive)
{
    return {tools.bsdtar, {"--numeric-owner", "-tvf", archive}, Form::bsdTar};
}

Here withTar(ArchiveTools const &tools, std::string const &archive)
{
    if (tools.tarKind == ArchiveTools::TarKind::bsd)
        return withBsdTar(tools, archive);
    if (tools.tarKind != ArchiveTools::TarKind::gnu)
        return {tools.tar, {"-tvf", archive}, Form::tar};
    return {tools.tar, {"--full-time", "--numeric-owner", "--quoting-style=escape", "-tvf", archive}, Form::gnuTar};
}

Here listTarHere(ArchiveTools const &tools, std::string const &archive)
{
    // GNU tar starts a program for each compression, which may be missing; it comes first where it does without, and
    // steps over the data of an archive that is not compressed.
    auto const format = detectArchiveFormat(lastComponent(archive));
    if (!tools.bsdtar.empty() && (tools.tar.empty() || !format))
        return withBsdTar(tools, archive);
    if (tools.tar.empty())
        throw FileOperationError::Unsupported("this computer has no tar to read " + lastComponent(archive) +
                                              ". Install the package tar.");
    return withTar(tools, archive);
}

Here listZipHere(ArchiveTools const &tools, std::string const &archive)
{
    if (!tools.bsdtar.empty())
        return withBsdTar(tools, archive);
    if (!tools.sevenZip.empty())
        return withSevenZip(tools, archive);
    if (!tools.unzip.empty())
        return {tools.unzip, {"-lqq", archive}, Form::tar};
    throw FileOperationError::Unsupported(
        "this computer has nothing to read a .zip. Install the package libarchive-tools.");
}

std::string windowsPath(std::string const &path)
{
    return WindowsPath::toNative(path);
}

std::string doubledQuotes(std::string_view text)
{
    std::string doubled;
    for (auto const character : text)
        doubled += character == '\'' ? "''" : std::string(1, character);
    return doubled;
}

There withTarThere(ShellDialect dialect, ArchiveCapability const &capability, std::string const &archive)
{
    if (dialect == ShellDialect::powershell)
        return {windowsTarListing(windowsPath(archive)), "tar", Form::tar};
    if (capability.usesBSDTar)
        return {std::string(BsdTarThere::locale()) + "export TZ=UTC; " +
                    BsdTarThere::withoutPassword("tar --numeric-owner -tvf " + ShellLiteral::posix(archive)),
                "tar", Form::bsdTar};
    // GNU tar would write names that are not ASCII as octal numbers.
    return {"tar --quoting-style=literal -tvf " + ShellLiteral::posix(archive), "tar", Form::tar};
}

There withSevenZipThere(ShellDialect dialect, std::string const &program, std::string const &archive)
{
    if (dialect == ShellDialect::powershell)
        return {"& " + program + " @('l','-slt','-ba','-bso0','--','" + doubledQuotes(windowsPath(archive)) + "')",
                program, Form::sevenZip};
    return {program + " l -slt -ba -bso0 -- " + ShellLiteral::posix(archive), program, Form::sevenZip};
}

bool beginsWithDot(std::string_view tarListing)
{
    // The folder itself is the first member of an archive that was made of a whole folder.
    return tarListing.substr(0, tarListing.find('\n')).contains(" ./");
}

} // namespace

Here here(ArchiveTools const &tools, std::string const &archive)
{
    switch (familyOf(archive)) {
    case ArchiveFamily::tar:
        return listTarHere(tools, archive);
    case ArchiveFamily::zip:
        return listZipHere(tools, archive);
    case ArchiveFamily::sevenZip:
        if (tools.sevenZip.empty())
            throw FileOperationError::Unsupported(
                "this computer has no 7-Zip to read a .7z. Install the package 7zip.");
        return withSevenZip(tools, archive);
    case ArchiveFamily::other:
        break;
    }
    if (!tools.bsdtar.empty())
        return withBsdTar(tools, archive);
    if (!tools.sevenZip.empty())
        return withSevenZip(tools, archive);
    throw FileOperationError::Unsupported("this computer has nothing to read " + lastComponent(archive) +
                                          ". Install the package libarchive-tools.");
}

There there(ShellDialect dialect, ArchiveCapability const &capability, std::string const &host,
            std::string const &archive)
{
    auto const family = familyOf(archive);
    if (family == ArchiveFamily::tar || (family != ArchiveFamily::sevenZip && capability.usesBSDTar))
        return withTarThere(dialect, capability, archive);
    if (!capability.sevenZip)
        throw FileOperationError::Unsupported(host + " cannot read this archive. Install 7zip there.");
    return withSevenZipThere(dialect, *capability.sevenZip, archive);
}

ArchiveMembers parse(Form form, std::string_view output, std::chrono::system_clock::time_point now)
{
    switch (form) {
    case Form::tar:
        return {.entries = ArchiveListing::parseTar(output),
                .beginWithDot = beginsWithDot(output),
                .hardLinks = ArchiveListing::hardLinksIn(output)};
    case Form::gnuTar:
        return DatedListing::parseGnuTar(output);
    case Form::bsdTar:
        return DatedListing::parseBsdTar(output, now);
    case Form::sevenZip:
        break;
    }
    return DatedListing::parseSevenZip(output);
}

std::string windowsTarListing(std::string_view archive)
{
    std::array<std::string, 11> const statements{
        "$psi = New-Object System.Diagnostics.ProcessStartInfo",
        "$psi.FileName = 'tar'",
        "$psi.Arguments = '-tvf \"" + doubledQuotes(archive) + "\"'",
        "$psi.RedirectStandardOutput = $true",
        "$psi.UseShellExecute = $false",
        "$cp = [System.Globalization.CultureInfo]::CurrentCulture.TextInfo.ANSICodePage",
        "try { $psi.StandardOutputEncoding = [System.Text.Encoding]::GetEncoding($cp) } catch {}",
        "$proc = [System.Diagnostics.Process]::Start($psi)",
        "$out = $proc.StandardOutput.ReadToEnd()",
        "$proc.WaitForExit()",
        "[Console]::Out.Write($out)"};
    std::string text;
    for (auto const &statement : statements)
        text += (text.empty() ? "" : "; ") + statement;
    return text;
}

} // namespace tw::ArchiveListCommand
