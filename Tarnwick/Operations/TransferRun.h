#pragma once

#include "Tarnwick/Operations/CopyTally.h"

#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace tw {

class StagingFolder;

/// Carries out a TransferJob.
///
/// The source of a move goes last: only names that have arrived whole, as both sides say when all has been copied, and
/// only if everything could be copied. What goes through a staging folder of the target, see CopyStep, is renamed when
/// it is whole. What goes from this machine goes to the Trash, except to another of its file systems: for good. A
/// renaming fails with FileOperationError::OtherFileSystem if it turns out that it leads to another file system after
/// all.
///
/// Threads: main context only.
/// Lifetime: shared; `perform` keeps it.
/// Cancellation: by `cancel`, within a moment, or within some seconds if a place does not answer. What has arrived
/// stays; of the names in a staging folder, those that are whole. A source of which all has arrived may be deleted in
/// part by then.
class TransferRun : public std::enable_shared_from_this<TransferRun> {
public:
    TransferRun(TransferJob job, std::shared_ptr<Transfer> transfer, Transfer::Reporter onProgress);

    /// Does not throw; called once. After `cancel` the failure is FileOperationError::Cancelled.
    Task<TransferEnd> perform();

    void cancel();

private:
    using Self = std::shared_ptr<TransferRun>;
    using Names = std::vector<std::string>;

    static Task<TransferEnd> performHere(Self self);
    static Task<void> performSteps(Self self);
    static Task<void> copyAndRemove(Self self, TransferPlan plan);
    static Task<Survey> copyStaged(Self self, TransferPlan plan);
    static Task<Survey> copyAndSurvey(Self self, Operands staging, Names names);
    static Task<Survey> copyAndPublish(Self self, StagingFolder folder, TransferPlan plan);
    static Task<void> publish(Self self, Operands staging, TransferPlan plan);
    static Task<void> publishWhole(Self self, Operands staging, TransferPlan plan);
    static Task<void> copyNames(Self self, Names names, Operands target);
    static Task<Survey> survey(Self self, Operands where, Names names, Survey::Detail detail);
    static Task<void> removeArrived(Self self, TransferPlan plan, MoveCheck::Surveys surveys);
    static Task<void> noteGone(Self self, Names going);

    void throwIfCancelled() const;

    // Constant after construction.
    std::shared_ptr<TransferJob const> const job;
    std::shared_ptr<Transfer> const transfer;

    std::stop_source stop;
    std::shared_ptr<TransferEnd> const end = std::make_shared<TransferEnd>();
    CopyTally tally;
};

} // namespace tw
