#include "Tarnwick/Operations/CopyMove.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "Tarnwick/Operations/Agreement.h"
#include "Tarnwick/Operations/AnswerOrCancel.h"
#include "Tarnwick/Operations/ArchiveChanges.h"
#include "Tarnwick/Operations/ExtractOut.h"
#include "Tarnwick/Operations/TargetFolder.h"
#include "Tarnwick/Operations/TransferSteps.h"
#include "Tarnwick/Operations/TransferWords.h"
#include "Tarnwick/Panes/PaneStatus.h"

namespace tw {

namespace {

/// The connection that would have to be written to and cannot be; empty if there is none.
std::string readOnlyOf(TransferJob const &job)
{
    if (!job.target.browser->writer())
        return job.target.connection;
    return job.isRename() && !job.source.browser->writer() ? job.source.connection : std::string();
}

Task<void> transferTo(OperationContext context, TransferKind kind, std::string where)
{
    auto work = context.beginWork();
    TransferJob job{.kind = kind, .source = context.operands};
    auto finding = targetFolder(context, std::move(where));
    auto target =
        co_await answerOrCancel(context, TransferWords::title(kind, job.source.names.size()), std::move(finding));
    job.target = std::move(target);
    if (auto const readOnly = readOnlyOf(job); !readOnly.empty()) {
        context.warn({"%@ is read-only", {readOnly}});
        co_return;
    }
    work.reset();
    auto const writing = ClaimSteps::of(context, job, TransferRefusal::Naming::kept);
    auto agreed = co_await Agreement::reach(context, writing, [context, job](auto taken, auto sheet) {
        return context.dialogs->resolve(TransferWords::conflicts(job.kind, job.target, std::move(taken), sheet));
    });
    if (!agreed)
        co_return;
    job.isMoveBetweenFileSystems = TransferSteps::isMoveBetweenFileSystems(job, agreed->checked.facts);
    job.targetTakesCasesForOne = agreed->checked.facts.target.takesCasesForOne;
    auto named =
        co_await ClaimSteps::withFreeNames(context, std::move(agreed->plan), writing, std::move(agreed->checked));
    job.plan = std::move(named.plan);
    if (job.plan.isEmpty())
        co_return;
    auto const end = co_await TransferSteps::perform(context, job, {.atSource = context.nameSurviving()});
    named.claim.reset();
    co_await TransferSteps::tell(context, job, end);
}

/// Between an archive and a folder.
Task<void> transferWithArchive(OperationContext context, TransferKind kind)
{
    if (kind == TransferKind::move) {
        context.warn(context.operands.archive ? "files cannot be moved out of an archive"
                                              : "files cannot be moved into an archive");
        co_return;
    }
    if (context.operands.archive) {
        co_await extractOut(context, context.operands, context.target);
        co_return;
    }
    FileDrag files{
        .connection = context.operands.connection, .directory = context.operands.path, .names = context.operands.names};
    context.operands = context.target;
    co_await addToArchive(std::move(context), std::move(files));
}

Task<void> transferOperands(OperationContext context, TransferKind kind)
{
    if (context.operands.names.empty()) {
        context.refuse();
        co_return;
    }
    if (context.operands.archive || context.target.archive) {
        co_await transferWithArchive(context, kind);
        co_return;
    }
    auto question = TransferWords::question(kind, context.operands, context.target);
    question.objection = objectionToTarget;
    auto const where = co_await context.dialogs->prompt(std::move(question));
    if (!where)
        co_return;
    auto const outcome = co_await outcomeOf(transferTo(context, kind, *where));
    if (outcome.failure)
        co_await context.showFailure(outcome.failure);
}

} // namespace

Task<void> copyOperands(OperationContext context)
{
    return transferOperands(std::move(context), TransferKind::copy);
}

Task<void> moveOperands(OperationContext context)
{
    return transferOperands(std::move(context), TransferKind::move);
}

} // namespace tw
