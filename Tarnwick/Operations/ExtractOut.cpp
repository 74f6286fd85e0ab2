#include "Tarnwick/Operations/ExtractOut.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "Tarnwick/Connections/OpenArchive.h"
#include "Tarnwick/Operations/Agreement.h"
#include "Tarnwick/Operations/ArchiveSteps.h"
#include "Tarnwick/Operations/ArchiveWords.h"
#include "Tarnwick/Operations/CountPhrase.h"
#include "Tarnwick/Operations/TransferWords.h"

namespace tw {

namespace {

Task<void> extract(OperationContext context, Operands what, Operands target)
{
    auto const writing = ClaimSteps::of(context, {.source = what, .target = target}, TransferRefusal::Naming::kept);
    auto agreed = co_await Agreement::reach(context, writing, [context, target](auto taken, auto /*sheet*/) {
        return ArchiveSteps::replaceAll(context, std::move(taken), [target](auto const &names) {
            return ArchiveWords::replaceAt(TransferWords::place(target), names);
        });
    });
    if (!agreed)
        co_return;
    auto const into = ArchiveSteps::endpointOf(target, target.path);
    if (!into)
        throw FileOperationError::Unsupported("copying to " + target.connection);
    auto const archive = co_await OpenArchive::endpoint(what.archive);
    auto const members = co_await OpenArchive::members(what.archive, what.paths());
    ArchiveSteps::Work work{
        .title = TransferWords::title(TransferKind::copy, what.names.size()),
        .conclusion = "Copied " + countPhrase(what.names.size()) + " to " + TransferWords::place(target) + ".",
        .claim = std::move(agreed->checked.claim),
        .begin = [members, archive, into = *into](Archives &archives, Archives::Reporter onProgress) {
            return archives.extract(members, archive, into, std::move(onProgress));
        }};
    auto const isDone = co_await ArchiveSteps::perform(context, std::move(work));
    co_await target.browser->wroteInto(target.path, what.names);
    for (auto const &weak : context.panes) {
        auto const each = weak.lock();
        if (each && isDone)
            each->unmarkIfAt(what);
        if (each)
            each->rereadIfAt(target, {});
    }
}

} // namespace

Task<void> extractOut(OperationContext context, Operands members, Operands target)
{
    if (target.archive) {
        context.warn("files cannot be copied from one archive into another");
        co_return;
    }
    if (!target.browser->writer()) {
        context.warn({"%@ is read-only", {target.connection}});
        co_return;
    }
    auto const outcome = co_await outcomeOf(extract(context, std::move(members), std::move(target)));
    if (outcome.failure)
        co_await context.showFailure(outcome.failure);
}

} // namespace tw
