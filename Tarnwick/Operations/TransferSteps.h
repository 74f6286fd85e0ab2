#pragma once

#include "TWCore/Provider/TransferRefusal.h"
#include "Tarnwick/Operations/OperationContext.h"
#include "Tarnwick/Operations/TakenNames.h"
#include "Tarnwick/Operations/TransferJob.h"

#include <stop_token>
#include <string>

/// The steps that copying, moving, pasting and dropping have in common.
namespace tw::TransferSteps {

/// Offers to make the folder, which is missing. Throws Cancelled if the user does not want that.
Task<void> makeMissing(OperationContext context, Operands folder);

/// Asks both places about the names, and refuses what would be nonsense before it begins. Throws what the places throw,
/// and FileOperationError::Failed for nonsense. If the folder is missing at the target, only that is said.
///
/// Cancellation: nothing is written after it. What was made to compare the places goes, or is named to the user.
Task<TakenNames::Facts> check(OperationContext context, TransferJob job, TransferRefusal::Naming naming);

/// True for a move within one place between folders on different devices. Others may turn out to be such moves when
/// something is renamed: mounts of one device, or layers of one mount.
bool isMoveBetweenFileSystems(TransferJob const &job, TakenNames::Facts const &facts);

/// The plan with a free name for each that is to be kept beside the one that is there. `others` are not free.
Task<TransferPlan> withFreeNames(TransferPlan plan, Operands target, std::vector<std::string> others,
                                 bool takesCasesForOne);

/// Where cursors go afterwards in the pane of the key press.
struct Cursor {
    std::string atSource = {}; ///< if everything has gone from there; empty: it stays
    std::string atTarget = {}; ///< empty: it stays
};

/// Takes reports on any thread, and shows some of them on `main` as long as there is something to show.
Transfer::Reporter reporterTo(std::shared_ptr<Executor> main, std::weak_ptr<Progress> shown);

/// Performs the job, with progress if bytes move, and has all panes read again what has changed. `callOff` cancels it,
/// as the user can.
Task<TransferEnd> perform(OperationContext context, TransferJob job, Cursor cursor, std::stop_token callOff = {});

/// Says how it has ended, if that is not what was to be. Throws Cancelled if the window goes.
Task<void> tell(OperationContext context, TransferJob job, TransferEnd end);

/// Both. The result is what was reported.
Task<TransferEnd> carryOut(OperationContext context, TransferJob job, Cursor cursor);

} // namespace tw::TransferSteps
