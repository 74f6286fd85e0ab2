#pragma once

#include "Tarnwick/Operations/TransferJob.h"

#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace tw {

/// Carries out a TransferJob.
///
/// The source of a move goes last: only names that have arrived whole, as both sides say when all has been copied, and
/// only if everything could be copied. Names that are written under other ones are copied into a staging folder of the
/// target first, since a transfer writes every name as it is.
///
/// Threads: main context only.
/// Lifetime: shared; `perform` keeps it.
/// Cancellation: by `cancel`, within a moment. What has arrived stays. Deletions are not called off.
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
    static Task<Survey> copyRenamed(Self self, std::vector<TransferPlan::Renamed> renamed);
    static Task<Survey> renameStaged(Self self, Operands staging, std::vector<TransferPlan::Renamed> renamed);
    static Task<void> copyNames(Self self, Names names, Operands target);
    static Task<Survey> survey(Self self, Operands where, Names names, Survey::Detail detail);
    static Task<void> removeArrived(Self self, TransferPlan plan, MoveCheck::Surveys surveys);

    Transfer::Reporter reporterOfNextCopy() const;
    void add(TransferSummary const &part);
    void forgetArrivals(Names const &names);
    void throwIfCancelled() const;

    // Constant after construction.
    std::shared_ptr<TransferJob const> const job;
    std::shared_ptr<Transfer> const transfer;
    Transfer::Reporter const onProgress;

    std::stop_source stop;
    std::shared_ptr<TransferEnd> const end = std::make_shared<TransferEnd>();
};

} // namespace tw
