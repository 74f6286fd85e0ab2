#include "Tarnwick/Operations/MarkByMask.h"

#include "Tarnwick/Table/NameMask.h"

namespace tw {

namespace {

std::optional<std::string> objectionToMask(std::string_view mask)
{
    if (mask.empty())
        return "A mask needs at least one pattern.";
    if (mask.size() > NameMask::longestBytes)
        return "This mask is too long: it has " + std::to_string(mask.size()) + " bytes, and " +
               std::to_string(NameMask::longestBytes) + " are allowed.";
    return std::nullopt;
}

Task<void> askForMask(OperationContext context, PaneModel::Marks change)
{
    auto const isMarking = change == PaneModel::Marks::insert;
    Dialogs::Prompt question{.title = isMarking ? "Select Files" : "Unselect Files",
                             .message = "Wildcards, separated by spaces or semicolons — *.txt;*.md",
                             .initial = "*.*",
                             .okTitle = isMarking ? "Select" : "Unselect",
                             .objection = objectionToMask};
    auto const mask = co_await context.dialogs->prompt(std::move(question));
    auto const pane = context.pane.lock();
    if (mask && pane && pane->pathOnShow() == context.operands.path)
        pane->markMatching(*mask, change);
}

} // namespace

Task<void> markByMask(OperationContext context)
{
    return askForMask(std::move(context), PaneModel::Marks::insert);
}

Task<void> unmarkByMask(OperationContext context)
{
    return askForMask(std::move(context), PaneModel::Marks::remove);
}

} // namespace tw
