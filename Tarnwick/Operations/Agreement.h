#pragma once

#include "Tarnwick/Operations/ClaimSteps.h"
#include "Tarnwick/Operations/TransferWords.h"

#include <functional>
#include <optional>

namespace tw {

/// What is written under which names, as the target and the user agree.
struct Agreement {
    /// Asks the user about names that are taken; see Dialogs::resolve.
    using Ask = std::function<Task<Dialogs::Resolution>(std::vector<NameConflict> taken, TransferWords::Sheet sheet)>;

    TransferPlan plan;
    ClaimSteps::Checked checked;

    /// Nothing if the user calls it off. The target is asked again after each sheet, and a sheet comes again for what
    /// has changed under it.
    static Task<std::optional<Agreement>> reach(OperationContext context, ClaimSteps::Writing writing, Ask ask);
};

} // namespace tw
