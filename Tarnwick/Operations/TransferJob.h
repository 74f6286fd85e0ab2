#pragma once

#include "TWEngine/Transfer/Transfer.h"
#include "Tarnwick/Operations/MoveCheck.h"
#include "Tarnwick/Operations/TransferPlan.h"
#include "Tarnwick/Panes/Operands.h"

#include <exception>
#include <string>
#include <vector>

namespace tw {

enum class TransferKind { copy, move };

/// A copy or a move of names from one folder into another, once it is clear under which names they are written.
struct TransferJob {
    TransferKind kind = TransferKind::copy;
    Operands source = {};
    Operands target = {}; ///< without names
    TransferPlan plan = {};
    bool isMoveBetweenFileSystems = false; ///< of one place, where nothing can be renamed
    bool targetTakesCasesForOne = false;

    /// Moves within one place rename: no bytes move.
    bool isRename() const
    {
        return kind == TransferKind::move && !isMoveBetweenFileSystems &&
               source.browser->providerRef()->identifier() == target.browser->providerRef()->identifier();
    }
};

/// The result of a copy or a move.
struct TransferEnd {
    TransferSummary summary = {};       ///< of the names of the source
    std::vector<std::string> gone = {}; ///< from the source
    MoveCheck kept = {};                ///< of a move: what was copied and stays is `changed` or `unequal`

    std::vector<std::string> leftBehind = {}; ///< paths of staging folders that may be there still
    bool isSourceTouched = false;             ///< everything has arrived, and the deletion of the source was begun
    bool isGoneKnown = true;                  ///< false: the source did not say what that has deleted
    bool mayBePartlyGone = false;             ///< a folder is still at the source, perhaps without all that was in it
    std::exception_ptr failure = {};          ///< of the copy or the renaming
    std::exception_ptr sourceFailure = {};    ///< everything was copied, but not everything could be deleted
};

} // namespace tw
