#pragma once

#include "TWCore/Provider/TransferRefusal.h"
#include "Tarnwick/Operations/ClaimedNames.h"
#include "Tarnwick/Operations/OperationContext.h"
#include "Tarnwick/Operations/TakenNames.h"
#include "Tarnwick/Operations/TransferJob.h"

/// How copying, moving, pasting and dropping keep clear of the names that another transfer is writing.
namespace tw::ClaimSteps {

/// What the places say, with a claim on the names at the target.
struct Checked {
    TakenNames::Facts facts;
    ClaimedNames::Claim claim;
};

/// TransferSteps::check, and refuses names that another transfer is to write. What has been written by the time of the
/// claim is in the facts.
Task<Checked> check(OperationContext context, TransferJob job, TransferRefusal::Naming naming);

/// A plan with a free name for each that is to be kept beside the one that is there.
struct Named {
    TransferPlan plan;
    ClaimedNames::Claim claim; ///< on the names that are written; to be held until that has ended
};

/// Needs the claim of `checked`, and lets it go.
Task<Named> withFreeNames(OperationContext context, TransferPlan plan, Operands target, Checked checked);

} // namespace tw::ClaimSteps
