#include "Tarnwick/Operations/OperationContext.h"

#include "Tarnwick/Panes/PaneStatus.h"

#include <algorithm>

namespace tw {

void OperationContext::warn(Text const &text) const
{
    if (auto const asked = pane.lock())
        asked->showStatus(PaneStatus::warning(text));
}

void OperationContext::refuse() const
{
    if (auto const asked = pane.lock())
        asked->refuse();
}

PaneSpinner::Work OperationContext::beginWork() const
{
    auto const asked = pane.lock();
    return asked ? asked->beginWork() : nullptr;
}

void OperationContext::rereadFolder(std::string const &select) const
{
    auto const asked = pane.lock();
    for (auto const &weak : panes) {
        if (auto const each = weak.lock())
            each->rereadIfAt(operands, each == asked ? select : std::string());
    }
}

std::string OperationContext::nameSurviving() const
{
    auto const asked = pane.lock();
    return asked ? asked->nameSurviving(operands.names) : std::string();
}

void OperationContext::rereadWithout(std::vector<std::string> const &gone, std::string const &survivor) const
{
    auto const asked = pane.lock();
    for (auto const &weak : panes) {
        auto const each = weak.lock();
        if (!each)
            continue;
        auto const goes = std::ranges::find(gone, each->cursorName()) != gone.end();
        auto const select = each == asked ? survivor : goes ? each->nameSurviving(gone) : std::string();
        each->rereadIfAt(operands, select);
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
