#pragma once

#include "TWEngine/Applications/FileNature.h"
#include "Tarnwick/Operations/Dialogs.h"

#include <optional>
#include <string>

namespace tw::ProgramQuestion {

/// Where a file comes from, as far as it is trusted.
struct Origin {
    std::string host = {}; ///< empty: it lies on this machine
};

/// What is asked before a file is opened that would be executed. Nothing for a document.
///
/// The answer `ok` opens it with an application that the user chooses. `other` runs it, and is offered for a file of
/// the user's own only: not for one of a host or a download, whether or not it has a mark.
std::optional<Dialogs::Confirmation> before(FileNature const &nature, std::string const &name, Origin const &origin);

} // namespace tw::ProgramQuestion
