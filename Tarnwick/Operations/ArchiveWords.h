#pragma once

#include "Tarnwick/Operations/Dialogs.h"
#include "Tarnwick/Panes/Operands.h"

namespace tw {

class ArchiveTooLarge;

/// What changes to archives, and copies out of them, ask and say.
namespace ArchiveWords {

/// More names than that in a list do not help to decide.
inline constexpr std::size_t mostNames = 8;

/// The paths of the operands, as an ArchiveEngine takes members.
std::vector<std::string> membersOf(Operands const &what);

/// Why the archive that is on show at `where` cannot be changed, or empty. `changing` is said if it lies elsewhere.
Text objectionToChange(Operands const &where, Text changing);

Dialogs::Confirmation replaceAt(std::string const &place, std::vector<std::string> const &taken);
Dialogs::Confirmation replaceIn(std::string const &archive, std::vector<std::string> const &taken);
Dialogs::Confirmation deleteFrom(std::string const &archive, std::vector<std::string> const &names);

/// `what` is the title of the work.
Dialogs::Confirmation unpackAllOf(std::string const &what, ArchiveTooLarge const &tooLarge);

} // namespace ArchiveWords

} // namespace tw
