#pragma once

#include "TWCore/Provider/FolderFacts.h"

#include <optional>
#include <string>

namespace tw {

/// Why a copy or a move would be nonsense, and is not begun.
struct TransferRefusal {
    enum class Reason {
        targetIsMissing,
        targetIsNoFolder,
        intoItself, ///< a folder into itself, or into one below it
        ontoItself, ///< a file onto itself, by whatever path
    };

    /// Whether source and target are folders of one place, which knows its files by the same identities.
    enum class Places { same, different };

    Reason reason;
    std::string name = {}; ///< of the source; empty if the reason is the target's

    friend bool operator==(TransferRefusal const &, TransferRefusal const &) = default;

    /// `source` was asked about the names to be copied, `target` about those to be written. Names that get another name
    /// at the target are `renamed`: they may go into their own folder.
    enum class Naming { kept, renamed };
    static std::optional<TransferRefusal> of(FolderFacts const &source, FolderFacts const &target, Places places,
                                             Naming naming = Naming::kept);
};

} // namespace tw
