#pragma once

#include "TWCore/Archives/ArchiveListCommand.h"

#include <string>
#include <vector>

/// The commands that write the content of one member of an archive to their output.
///
/// `member` is the name as the archive writes it. It reaches its program as it is: no pattern, no option, no list of
/// names.
///
/// Errors: as ArchiveListCommand.
namespace tw::ArchiveMemberCommand {

struct Here {
    std::string program;
    std::vector<std::string> arguments;
};

/// By the program that lists the archive.
Here here(ArchiveTools const &tools, std::string const &archive, std::string const &member);

/// What the program finds at its input.
enum class Input { nothing, password };

/// For the login shell of a POSIX host.
std::string there(ArchiveCapability const &capability, std::string const &host, std::string const &archive,
                  std::string const &member, Input input);

} // namespace tw::ArchiveMemberCommand
