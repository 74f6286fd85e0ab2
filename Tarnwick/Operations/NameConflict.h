#pragma once

#include "TWCore/Provider/FolderFacts.h"

#include <string>
#include <vector>

namespace tw {

/// A name to be written that the target has already.
struct NameConflict {
    enum class Answer { replace, keepBoth, skip };

    /// What the source is, seen from the target.
    enum class Comparison {
        same, ///< in size and date; nothing is read
        newer,
        older,
        differs, ///< of one date
        unlike,  ///< a folder and a file, or another pair of kinds
        folders, ///< merged on replace; a date of a folder says nothing about what is in it
    };

    FolderFacts::Occupant source;
    FolderFacts::Occupant target;

    Comparison comparison() const noexcept;

    /// False for a folder and a file: no tool that copies puts one in the place of the other on every route, and nobody
    /// means to give a whole folder for a file.
    bool isReplaceable() const noexcept;
};

} // namespace tw
