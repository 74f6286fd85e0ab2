#include "Tarnwick/Operations/OperationContext.h"

#include "Tarnwick/Panes/PaneStatus.h"

namespace tw {

void OperationContext::warn(std::string const &text) const
{
    if (auto const asked = pane.lock())
        asked->showStatus(PaneStatus::warning(text));
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

} // namespace tw
