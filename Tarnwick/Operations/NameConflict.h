#pragma once

#include "TWCore/Provider/FolderFacts.h"

#include <string>
#include <vector>

namespace tw {

/// A name to be written that the target has already.
struct NameConflict {
    enum class Answer { replace, keepBoth, skip };

    FolderFacts::Occupant source;
    FolderFacts::Occupant target;
};

} // namespace tw
