#include "Tarnwick/Operations/Agreement.h"

#include "Tarnwick/Operations/AnsweredConflicts.h"

namespace tw {

Task<std::optional<Agreement>> Agreement::reach(OperationContext context, ClaimSteps::Writing writing, Ask ask)
{
    AnsweredConflicts conflicts;
    for (auto sheet = TransferWords::Sheet::first;; sheet = TransferWords::Sheet::again) {
        auto work = context.beginWork(writing.target.browser);
        auto checked = co_await ClaimSteps::check(context, writing);
        work.reset();
        conflicts.learn(TakenNames::conflicts(writing.target.names, checked.facts));
        auto open = conflicts.open();
        if (open.empty())
            co_return Agreement{.plan = conflicts.plan(writing.target.names), .checked = std::move(checked)};
        checked.claim.reset(); // a sheet that stands holds nobody else up
        auto const answers = co_await ask(std::move(open), sheet);
        if (!answers)
            co_return std::nullopt;
        conflicts.answer(*answers);
    }
}

} // namespace tw
