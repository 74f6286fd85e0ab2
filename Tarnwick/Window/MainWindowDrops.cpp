// What is dropped on the panes of a window, and what is dragged out of them.

#include "Tarnwick/Operations/Delivery.h"
#include "Tarnwick/Window/MainWindowController.h"

namespace tw {

std::unique_ptr<DropHover> MainWindowController::makeDrops(PaneSide side)
{
    return std::make_unique<DropHover>(collaborators, container(side),
                                       [this](DropHover::Drop const &drop) { accept(drop); });
}

DropHover &MainWindowController::drops(PaneSide side) const
{
    return *hovers[side == PaneSide::left ? 0 : 1];
}

std::shared_ptr<DragFetch> MainWindowController::fetchForDrag(PaneSide side) const
{
    auto const &from = pane(side);
    if (from->connectionName() == localConnection || !services.dragFolders || !window)
        return nullptr;
    auto fetch = std::make_shared<DragFetch>(contextOf(from), collaborators.mainContext, collaborators.clock,
                                             DragFetch::Limits());
    fetch->prepare(services.dragFolders);
    return fetch;
}

void MainWindowController::accept(DropHover::Drop const &drop)
{
    if (!window)
        return;
    // The pane may have gone to another place while the user was asked.
    if (drop.pane->connectionName() != drop.connection)
        return drop.pane->refuse();
    auto context = contextOf(drop.pane);
    context.operands.names.clear();
    context.operands.path = drop.folder;
    spawn({collaborators.mainContext, {}}, delivering(std::move(context), drop));
}

Task<void> MainWindowController::delivering(OperationContext context, DropHover::Drop const &drop)
{
    if (!drop.offer->files)
        return deliverPaths(std::move(context), drop.offer->paths, drop.kind, SameFolder::refuse);
    auto drag = *drop.offer->files;
    drag.isMove = drop.kind == TransferKind::move;
    return deliver(std::move(context), {.drag = std::move(drag), .sameFolder = SameFolder::refuse});
}

} // namespace tw
