#pragma once

#include "TWCore/Provider/TransferRefusal.h"
#include "Tarnwick/Operations/ClaimedNames.h"
#include "Tarnwick/Operations/OperationContext.h"
#include "Tarnwick/Operations/TakenNames.h"
#include "Tarnwick/Operations/TransferJob.h"

#include <functional>

/// How operations keep clear of the names that another one is changing.
///
/// Errors: FileOperationError::Failed names what is claimed and by what; everything that the places throw.
namespace tw::ClaimSteps {

/// Names that are to be written.
struct Writing {
    std::string title;     ///< for the user, as "Copy 3 items"
    std::string operation; ///< for failures, as "copy"
    Operands target;       ///< with the names
    Operands leaving = {}; ///< the sources of a move, with their names; without a browser: none
    /// Asks the places about them. If the folder is missing at the target, the facts say no more than that.
    std::function<Task<TakenNames::Facts>()> ask;
};

/// The names of the source, which have no other ones yet.
Writing of(OperationContext context, TransferJob job, TransferRefusal::Naming naming);

/// Names that are made there of something else, such as an archive.
Writing into(std::string title, std::string operation, Operands target);

/// What the places say, with a claim on the names.
struct Checked {
    TakenNames::Facts facts;
    ClaimedNames::Claim claim;
};

/// Asks, and refuses names that another operation changes. What has been written by the time of the claim is in the
/// facts. A folder that is missing at the target is offered to be made. Throws Cancelled if the user does not want
/// that, or cancels a question that takes long.
Task<Checked> check(OperationContext context, Writing writing);

/// A plan with a free name for each that is to be kept beside the one that is there.
struct Named {
    TransferPlan plan;
    ClaimedNames::Claim claim; ///< on the names that are changed; to be held until that has ended
};

/// Needs the claim of `checked`, and lets it go. Throws Cancelled if the user cancels a question that takes long.
Task<Named> withFreeNames(OperationContext context, TransferPlan plan, Writing writing, Checked checked);

/// A claim for a change that asks nothing before it. The place is asked where the folder is only if another operation
/// has claimed something there.
Task<ClaimedNames::Claim> claim(std::shared_ptr<ClaimedNames> claims, std::string operation, Operands what,
                                ClaimedNames::Use use);

} // namespace tw::ClaimSteps
