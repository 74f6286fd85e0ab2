#include "Tarnwick/Operations/ArchiveSteps.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Provider/CommandHost.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "Tarnwick/Operations/TransferSteps.h"
#include "Tarnwick/Operations/TransferWords.h"
#include "Tarnwick/Panes/PaneStatus.h"

namespace tw::ArchiveSteps {

namespace {

bool isCancelled(std::exception_ptr const &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (FileOperationError::Cancelled const &) {
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace

std::optional<TransferEndpoint> endpointOf(Operands const &place, std::string const &path)
{
    if (!place.browser->writer())
        return std::nullopt;
    auto host = std::dynamic_pointer_cast<CommandHost>(place.browser->providerRef());
    return host ? TransferEndpoint::remote(std::move(host), path) : TransferEndpoint::local(path);
}

Task<bool> perform(OperationContext context, Work work)
{
    auto const here = co_await currentContext();
    auto const archives = context.makeArchives();
    std::shared_ptr<Progress> shown = context.dialogs->progress(work.title + "…", [weak = std::weak_ptr(archives)] {
        if (auto const running = weak.lock())
            running->cancel();
    });
    auto working = work.begin(*archives, TransferSteps::reporterTo(here.executor, shown));
    auto const outcome = co_await outcomeOf(std::move(working));
    bool const wasCancelled = outcome.failure && isCancelled(outcome.failure);
    shown->conclude(!outcome.failure ? work.conclusion : PaneStatus::describe(outcome.failure).english());
    shown.reset();
    if (wasCancelled)
        context.warn({"%@ cancelled", {work.title}});
    else if (outcome.failure)
        co_await context.showFailure(outcome.failure);
    co_return !outcome.failure;
}

Task<void> showArrival(OperationContext context, Operands where, std::string name)
{
    std::vector<std::string> const names{name};
    co_await where.browser->wroteInto(where.path, names);
    auto const asked = context.pane.lock();
    for (auto const &weak : context.panes) {
        if (auto const each = weak.lock())
            each->rereadIfAt(where, each == asked ? std::string() : name);
    }
}

Task<bool> isTaken(OperationContext context, Operands where, std::string name)
{
    std::vector<std::string> const names{std::move(name)};
    auto const facts = co_await where.browser->factsAbout(where.path, names);
    if (facts.state != FolderFacts::State::missing)
        co_return !facts.taken.empty();
    auto const wanted = co_await context.dialogs->confirm(TransferWords::offerToCreate(where));
    if (wanted == Dialogs::Answer::cancel)
        throw Cancelled();
    co_await where.browser->makeDirectory(where.path);
    context.rereadAbove(where);
    co_return false;
}

} // namespace tw::ArchiveSteps
