#include "Tarnwick/Operations/CopyStep.h"

#include "Tarnwick/Operations/MoveWithin.h"
#include "Tarnwick/Operations/NamesWithout.h"

#include <algorithm>

namespace tw {

namespace {

TransferPlan stagedOf(TransferJob const &job, TransferPlan plan)
{
    if (!job.isMoveBetweenFileSystems)
        plan.free.clear();
    std::erase_if(plan.replace, [](auto const &each) { return !isFileOverFile(each); });
    return plan;
}

} // namespace

std::vector<CopyStep> CopyStep::of(TransferJob const &job, TransferPlan const &plan)
{
    std::vector<CopyStep> steps;
    for (auto const &round : plan.rounds(job.targetTakesCasesForOne)) {
        auto const staged = stagedOf(job, round);
        CopyStep direct{.plan = round.only(namesWithout(round.keptNames(), staged.keptNames()))};
        if (!direct.plan.isEmpty())
            steps.push_back(std::move(direct));
        for (auto &batch : staged.batches(mostReplaced))
            steps.push_back({.plan = std::move(batch), .isStaged = true});
    }
    return steps;
}

std::optional<CopyStep::Size> CopyStep::sizeOf(std::span<CopyStep const> steps)
{
    Size size;
    for (auto const &[plan, isStaged] : steps) {
        if (!plan.free.empty() || !plan.keepBoth.empty() || !std::ranges::all_of(plan.replace, isFileOverFile))
            return std::nullopt;
        for (auto const &each : plan.replace)
            size.bytes += each.source.size;
        size.files += std::ssize(plan.replace);
    }
    return size;
}

} // namespace tw
