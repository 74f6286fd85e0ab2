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

enum class Way {
    view,     ///< in the viewer, where nothing is executed
    openWith, ///< with an application that the user chooses
    run,      ///< offered only for a file of the user's own: neither for one of a host nor for a download
};

struct Question {
    Dialogs::Choice choice;
    std::vector<Way> ways; ///< as many as the choice has, in its order
};

/// What is asked before a file is opened that would be executed. Nothing for a document.
std::optional<Question> before(FileNature const &nature, std::string const &name, Origin const &origin);

} // namespace tw::ProgramQuestion
