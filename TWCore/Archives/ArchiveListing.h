#pragma once

#include "TWCore/Archives/ArchiveMembers.h"

#include <string>
#include <string_view>
#include <vector>

/// What the tools print about the members of an archive. The text is meant for people and differs between tools, so a
/// line that is not understood is left out, and nothing that a tool prints is an error.
namespace tw::ArchiveListing {

/// The members in the output of `tar -tvf` of GNU tar, bsdtar or the tar of Windows.
///
/// The dates are not read: every tar writes them in another way. The size is the nearest whole number before the time
/// of day, which for bsdtar is the day of the month.
std::vector<ArchiveEntry> parseTar(std::string_view text);

/// The hard links in the same output.
std::vector<ArchiveMembers::HardLink> hardLinksIn(std::string_view text);

/// The members in the output of `7z l -slt -ba`, which gives the dates in the time zone of this process.
std::vector<ArchiveEntry> parse7z(std::string_view text);

/// The name behind an escaped one of bsdtar or GNU tar: three octal digits behind a backslash are a byte.
std::string unescape(std::string_view name);

/// A member's path without slashes at its ends and "./" at its start. A path that has only backslashes is one of
/// Windows, and gets slashes.
std::string normalise(std::string path);

} // namespace tw::ArchiveListing
