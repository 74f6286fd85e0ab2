#pragma once

#include "TWCore/Archives/ArchiveMembers.h"

#include <chrono>
#include <string_view>

/// What the tools print about the members of an archive where we choose their options, locale and time zone: with exact
/// sizes and with dates.
///
/// A line that is not understood is left out, as in `ArchiveListing`. Members, kinds and sizes are the same for all
/// that both can read; but a name of a file is not cut at " -> ", which only links have behind it, and line ends and
/// tabs in names are read.
namespace tw::DatedListing {

/// From `tar --full-time --numeric-owner --quoting-style=escape -tv` in UTC.
ArchiveMembers parseGnuTar(std::string_view text);

/// From `bsdtar --numeric-owner -tv` in the C locale and UTC. It gives the time of day of half a year around `now` and
/// of other times the day.
ArchiveMembers parseBsdTar(std::string_view text, std::chrono::system_clock::time_point now);

/// From `7z l -slt -ba`, in the time zone of this process. Fractions of seconds are left out.
ArchiveMembers parseSevenZip(std::string_view text);

} // namespace tw::DatedListing
