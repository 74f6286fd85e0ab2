#pragma once

#include "TWCore/Archives/ArchiveMembers.h"
#include "TWCore/Archives/ArchiveTools.h"
#include "TWCore/Shell/ShellDialect.h"

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

/// The commands that list the members of an archive, and what their output means.
///
/// Errors: FileOperationError::Unsupported for a name that is no archive, and where the program is missing that would
/// read it; the text names the package of Debian that has the program.
namespace tw::ArchiveListCommand {

/// How a program writes the members.
enum class Form {
    tar,    ///< without dates, see ArchiveListing::parseTar
    gnuTar, ///< see DatedListing, as the next two
    bsdTar,
    sevenZip,
};

struct Here {
    std::string program;
    std::vector<std::string> arguments;
    Form form;
};

struct There {
    std::string text;    ///< for the host's resident shell, in a subshell
    std::string program; ///< the one that the text calls
    Form form;
};

/// For an archive of this machine. A program that reads an archive here also takes members out of it, since each has
/// its own idea of names that are no UTF-8.
Here here(ArchiveTools const &tools, std::string const &archive);

/// For an archive of a host, in the client's own form of its path.
There there(ShellDialect dialect, ArchiveCapability const &capability, std::string const &host,
            std::string const &archive);

ArchiveMembers parse(Form form, std::string_view output, std::chrono::system_clock::time_point now);

/// What lists an archive on Windows, where tar writes in the code page of the system and the resident shell reads
/// UTF-8. `archive` is the path in the form of Windows.
std::string windowsTarListing(std::string_view archive);

} // namespace tw::ArchiveListCommand
