#include "Tarnwick/Operations/ClaimSteps.h"

#include "TWCore/Model/FileOperationError.h"
#include "Tarnwick/Operations/TransferSteps.h"

#include <utility>

namespace tw::ClaimSteps {

namespace {

ClaimedNames::Names namesAt(Operands const &target, FolderFacts const &facts, std::vector<std::string> names)
{
    return {.place = target.browser->providerRef()->identifier(),
            .folder = facts.realPath.empty() ? target.path : facts.realPath,
            .names = std::move(names),
            .takesCasesForOne = facts.takesCasesForOne};
}

std::vector<std::string> writtenBy(TransferPlan const &plan)
{
    auto names = plan.keptNames();
    for (auto const &each : plan.renamed)
        names.push_back(each.newName);
    return names;
}

FileOperationError::Failed errorOf(TransferKind kind, std::string path)
{
    return {kind == TransferKind::copy ? "copy" : "move", std::move(path),
            "it is being written by another transfer. Wait for that one, or cancel it"};
}

} // namespace

Task<Checked> check(OperationContext context, TransferJob job, TransferRefusal::Naming naming)
{
    for (;;) {
        auto const endings = context.claims->endings();
        auto facts = co_await TransferSteps::check(context, job, naming);
        auto wanted = namesAt(job.target, facts.target, job.source.names);
        if (auto const path = context.claims->clash(wanted))
            throw errorOf(job.kind, *path);
        if (context.claims->endings() == endings)
            co_return Checked{.facts = std::move(facts), .claim = context.claims->hold(std::move(wanted))};
        // What has ended may have written names after the target had answered.
    }
}

Task<Named> withFreeNames(OperationContext context, TransferPlan plan, Operands target, Checked checked)
{
    for (;;) {
        auto const endings = context.claims->endings();
        auto const others = context.claims->besides(checked.claim);
        auto named = co_await TransferSteps::withFreeNames(plan, target, others, checked.facts.target.takesCasesForOne);
        auto written = namesAt(target, checked.facts.target, writtenBy(named));
        auto const isFree = !context.claims->clash(written, checked.claim);
        if (isFree && context.claims->endings() == endings)
            co_return Named{.plan = std::move(named), .claim = context.claims->hold(std::move(written))};
        // Another transfer has found the same free names meanwhile.
    }
}

} // namespace tw::ClaimSteps
