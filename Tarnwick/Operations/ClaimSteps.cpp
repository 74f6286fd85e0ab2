#include "Tarnwick/Operations/ClaimSteps.h"

#include "TWCore/Model/FileOperationError.h"
#include "Tarnwick/Operations/AnswerOrCancel.h"
#include "Tarnwick/Operations/TransferSteps.h"
#include "Tarnwick/Operations/TransferWords.h"

#include <utility>

namespace tw::ClaimSteps {

namespace {

using Names = ClaimedNames::Names;
using Use = ClaimedNames::Use;

Names namesAt(Operands const &where, FolderFacts const &facts, std::vector<std::string> names, Use use)
{
    return {.place = where.browser->providerRef()->identifier(),
            .folder = facts.realPath.empty() ? where.path : facts.realPath,
            .names = std::move(names),
            .takesCasesForOne = facts.takesCasesForOne,
            .use = use};
}

/// `written` at the target, and at the source what leaves of `read`.
std::vector<Names> changedBy(Writing const &writing, TakenNames::Facts const &facts, std::vector<std::string> written,
                             std::vector<std::string> read)
{
    std::vector all{namesAt(writing.target, facts.target, std::move(written), Use::written)};
    if (writing.leaving.browser)
        all.push_back(namesAt(writing.leaving, facts.source, std::move(read), Use::moved));
    return all;
}

char const *verb(Use use)
{
    switch (use) {
    case Use::written:
        return "writing";
    case Use::moved:
        return "moving";
    case Use::deleted:
        return "deleting";
    }
    return "changing";
}

FileOperationError::Failed errorOf(std::string operation, ClaimedNames::Clash clash)
{
    return {std::move(operation), std::move(clash.path),
            std::string("another operation is ") + verb(clash.use) + " it. Wait until it has ended, or cancel it"};
}

Task<TakenNames::Facts> askTarget(std::string operation, Operands target)
{
    auto said = co_await target.browser->factsAbout(target.path, target.names);
    if (said.state == FolderFacts::State::notAFolder)
        throw FileOperationError::Failed(operation, target.path, "this is a file, and no folder");
    co_return TakenNames::Facts{.source = {}, .target = std::move(said)};
}

} // namespace

Writing of(OperationContext context, TransferJob job, TransferRefusal::Naming naming)
{
    auto target = job.target;
    target.names = job.source.names;
    auto const leaves = job.kind == TransferKind::move && job.source.browser->writer();
    return {.title = TransferWords::title(job.kind, job.source.names.size()),
            .operation = job.kind == TransferKind::copy ? "copy" : "move",
            .target = std::move(target),
            .leaving = leaves ? job.source : Operands(),
            .ask = [context, job, naming] { return TransferSteps::check(context, job, naming); }};
}

Writing into(std::string title, std::string operation, Operands target)
{
    return {.title = std::move(title), .operation = operation, .target = target, .ask = [operation, target] {
                return askTarget(operation, target);
            }};
}

Task<Checked> check(OperationContext context, Writing writing)
{
    for (;;) {
        auto const endings = context.claims->endings();
        auto facts = co_await answerOrCancel(context, writing.title, writing.ask());
        if (facts.target.state == FolderFacts::State::missing) {
            co_await TransferSteps::makeMissing(context, writing.target);
            continue;
        }
        auto wanted = changedBy(writing, facts, writing.target.names, writing.leaving.names);
        if (auto clash = context.claims->clash(wanted))
            throw errorOf(writing.operation, *std::move(clash));
        if (context.claims->endings() == endings)
            co_return Checked{.facts = std::move(facts), .claim = context.claims->hold(std::move(wanted))};
        // What has ended may have written names after the target had answered.
    }
}

Task<Named> withFreeNames(OperationContext context, TransferPlan plan, Writing writing, Checked checked)
{
    auto const &facts = checked.facts;
    for (;;) {
        auto const endings = context.claims->endings();
        auto others = context.claims->besides(checked.claim->front(), checked.claim);
        auto naming =
            TransferSteps::withFreeNames(plan, writing.target, std::move(others), facts.target.takesCasesForOne);
        auto named = co_await answerOrCancel(context, writing.title, std::move(naming));
        auto changed = changedBy(writing, facts, named.writtenNames(), named.allNames());
        auto const isFree = !context.claims->clash(changed, checked.claim);
        if (isFree && context.claims->endings() == endings)
            co_return Named{.plan = std::move(named), .claim = context.claims->hold(std::move(changed))};
        // Another operation has found the same free names meanwhile.
    }
}

Task<ClaimedNames::Claim> claim(std::shared_ptr<ClaimedNames> claims, std::string operation, Operands what,
                                ClaimedNames::Use use)
{
    FolderFacts facts;
    if (claims->isAnyAt(what.browser->providerRef()->identifier())) {
        auto said = co_await what.browser->factsAbout(what.path, {});
        facts = std::move(said);
    }
    std::vector wanted{namesAt(what, facts, what.names, use)};
    if (auto clash = claims->clash(wanted))
        throw errorOf(std::move(operation), *std::move(clash));
    co_return claims->hold(std::move(wanted));
}

} // namespace tw::ClaimSteps
