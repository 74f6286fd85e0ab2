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

    /// Moves within one place rename: no bytes move.
    bool isRename() const
    {
        return kind == TransferKind::move &&
               source.browser->providerRef()->identifier() == target.browser->providerRef()->identifier();
    }
};

/// What has become of a copy or a move.
struct TransferEnd {
    TransferSummary summary = {};          ///< of the names of the source
    std::vector<std::string> gone = {};    ///< from the source
    MoveCheck kept = {};                   ///< of a move: copied, and what could not go is `changed` or `unequal`
    std::exception_ptr failure = {};       ///< of the copy or the renaming
    std::exception_ptr sourceFailure = {}; ///< everything was copied, and something could not be deleted
};

} // namespace tw
