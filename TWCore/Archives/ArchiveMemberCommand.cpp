#include "TWCore/Archives/ArchiveMemberCommand.h"

#include "TWCore/Archives/BsdTarThere.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Shell/ShellLiteral.h"

namespace tw::ArchiveMemberCommand {

namespace {

using ArchiveListCommand::Form;
using Arguments = std::vector<std::string>;

/// A pattern of bsdtar that fits this name alone.
std::string patternFor(std::string_view member)
{
    constexpr std::string_view signs = R"(*?[\^$)";
    std::string pattern;
    for (auto const character : member) {
        if (signs.contains(character))
            pattern += '\\';
        pattern += character;
    }
    return pattern;
}

Arguments ofTar(std::string const &archive, std::string member)
{
    return {"-xOf", archive, "--", std::move(member)};
}

/// GNU tar takes a backslash for the beginning of an escape, unless it is asked not to; others do not know the option.
Arguments ofPlainTar(std::string const &archive, std::string const &member)
{
    auto arguments = ofTar(archive, member);
    if (member.contains('\\'))
        arguments.insert(arguments.begin(), "--no-unquote");
    return arguments;
}

Arguments ofSevenZip(std::string const &archive, std::string const &member)
{
    // -spd: the names are no patterns.
    return {"x", "-so", "-bd", "-y", "-spd", "--", archive, member};
}

std::string commandLine(std::string line, Arguments const &arguments)
{
    for (auto const &argument : arguments)
        line += " " + ShellLiteral::posix(argument);
    return line;
}

} // namespace

Here here(ArchiveTools const &tools, std::string const &archive, std::string const &member)
{
    auto const listing = ArchiveListCommand::here(tools, archive);
    if (listing.form == Form::sevenZip)
        return {listing.program, ofSevenZip(archive, member)};
    if (listing.form == Form::bsdTar)
        return {listing.program, ofTar(archive, patternFor(member))};
    if (listing.program == tools.unzip)
        throw FileOperationError::Unsupported(
            "this computer has nothing to read one file of a .zip. Install the package libarchive-tools.");
    return {listing.program, ofPlainTar(archive, member)};
}

std::string there(ArchiveCapability const &capability, std::string const &host, std::string const &archive,
                  std::string const &member, Input input)
{
    auto const listing = ArchiveListCommand::there(ShellDialect::posix, capability, host, archive);
    if (listing.form == Form::sevenZip)
        return commandLine(listing.program, ofSevenZip(archive, member));
    if (!capability.usesBSDTar)
        return commandLine("tar", ofPlainTar(archive, member));
    auto call = commandLine("exec tar", ofTar(archive, patternFor(member)));
    if (input == Input::nothing)
        call = BsdTarThere::withoutPassword(call);
    return "sh -c " + ShellLiteral::posix(std::string(BsdTarThere::locale()) + call);
}

} // namespace tw::ArchiveMemberCommand
