#include "Tarnwick/Operations/OperationContext.h"

#include "TWCore/Async/Cancelled.h"
#include "Tarnwick/Panes/PaneStatus.h"

#include <algorithm>
#include <utility>

namespace tw {

namespace {

Task<void> show(std::shared_ptr<Dialogs> dialogs, std::exception_ptr failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (Cancelled const &) {
        throw;
    } catch (...) {
        // Shown outside of the handler: nothing may be awaited in one.
    }
    co_await dialogs->error(PaneStatus::describe(failure));
}

} // namespace

void OperationContext::say(Text text) const
{
    if (auto const asked = pane.lock())
        asked->showStatus(std::move(text));
}

void OperationContext::warn(Text const &text) const
{
    if (auto const asked = pane.lock())
        asked->showOutcome(PaneStatus::warning(text));
}

void OperationContext::refuse() const
{
    if (auto const asked = pane.lock())
        asked->refuse();
}

Task<void> OperationContext::showFailure(std::exception_ptr failure) const
{
    return show(dialogs, std::move(failure));
}

PaneSpinner::Work OperationContext::beginWork(std::shared_ptr<Browser> const &other) const
{
    auto const asked = pane.lock();
    if (!asked)
        return nullptr;
    auto work = asked->beginChange(operands.browser);
    if (!other || other == operands.browser)
        return work;
    auto const shows = std::ranges::find_if(panes, [&](auto const &weak) {
        auto const each = weak.lock();
        return each && each->operands().browser == other;
    });
    // The strip of a pane names the silent host that the pane shows, and no other one.
    auto const second = shows != panes.end() ? shows->lock() : asked;
    return std::make_shared<std::pair<PaneSpinner::Work, PaneSpinner::Work>>(std::move(work),
                                                                             second->beginChange(other));
}

void OperationContext::rereadFolder(std::string const &select) const
{
    auto const asked = pane.lock();
    for (auto const &weak : panes) {
        if (auto const each = weak.lock())
            each->rereadIfAt(operands, each == asked ? select : std::string());
    }
}

void OperationContext::rereadAbove(Operands where) const
{
    while (where.path.size() > 1) {
        where.path.resize(std::max<std::size_t>(where.path.find_last_of('/'), 1));
        rereadWithout(where, {}, {});
    }
}

std::string OperationContext::nameSurviving() const
{
    auto const asked = pane.lock();
    return asked ? asked->nameSurviving(operands.names) : std::string();
}

void OperationContext::rereadWithout(Operands const &where, std::vector<std::string> const &gone,
                                     std::string const &survivor) const
{
    auto const asked = pane.lock();
    for (auto const &weak : panes) {
        auto const each = weak.lock();
        if (!each)
            continue;
        auto const goes = std::ranges::find(gone, each->cursorName()) != gone.end();
        auto select = goes ? each->nameSurviving(gone) : std::string();
        if (each == asked && !survivor.empty())
            select = survivor;
        each->rereadIfAt(where, std::move(select));
    }
}

void OperationContext::unmarkOperands() const
{
    for (auto const &weak : panes) {
        if (auto const each = weak.lock())
            each->unmarkIfAt(operands);
    }
}

} // namespace tw
