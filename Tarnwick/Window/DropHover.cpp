#include "Tarnwick/Window/DropHover.h"

#include "Tarnwick/Dragging/EdgeScroll.h"
#include "Tarnwick/Window/PaneContainer.h"

namespace tw {

namespace {

/// The folder that so many components of a path lead to; nothing if it has fewer.
std::optional<std::string> folderAbove(std::string const &path, int components)
{
    std::size_t end = 0;
    for (auto part = 0; part < components; ++part) {
        end = path.find('/', end + 1);
        if (end == std::string::npos)
            return part + 1 == components ? std::optional(path) : std::nullopt;
    }
    return end == 0 ? "/" : path.substr(0, end);
}

} // namespace

DropHover::DropHover(PaneController::Collaborators const &collaborators, PaneContainer &side,
                     std::function<void(Drop drop)> dropped)
    : container(side),
      onDropped(std::move(dropped)),
      resting(collaborators.mainContext, collaborators.clock),
      scrolling(collaborators.mainContext, collaborators.clock, [this] {
          scrolling.set(EdgeScroll::interval);
          if (display)
              display->scrollRows(pixelsAStep);
      })
{
}

DropDecision DropHover::over(Offer const &offer, DropSpot spot, DragKeys held, Cause cause)
{
    auto const target = targetAt(spot);
    auto decision = decide(offer, target, held);
    // What has come under a resting pointer by itself does not open, or one folder after the other would.
    if (cause == Cause::pointer)
        rest(spot, target);
    else
        resting.off();
    scroll(spot.scroll);
    auto shownNow = target && !decision.isRefused() ? target->shown : DropDisplay::Target();
    shownNow.words = decision.words;
    show(shownNow);
    return decision;
}

void DropHover::leave()
{
    asked = {};
    resting.off();
    scroll(0);
    show({});
}

DropDecision DropHover::drop(Offer const &offer, DropSpot spot, DragKeys held)
{
    auto const target = targetAt(spot);
    auto decision = decide(offer, target, held);
    leave();
    if (decision.isRefused())
        return decision;
    Drop drop{.offer = offer,
              .pane = target->pane,
              .connection = target->place.connection,
              .folder = target->place.folder,
              .kind = decision.action == DropDecision::Action::move ? TransferKind::move : TransferKind::copy};
    if (decision.action != DropDecision::Action::ask)
        onDropped(std::move(drop));
    else if (display)
        display->askHow([perform = onDropped, drop = std::move(drop)](TransferKind kind) mutable {
            drop.kind = kind;
            perform(std::move(drop));
        });
    return decision;
}

std::optional<DropHover::Target> DropHover::targetAt(DropSpot spot) const
{
    using Kind = DropSpot::Kind;
    using Mark = DropDisplay::Target::Mark;
    auto pane = container.activePane();
    if (spot.kind == Kind::tab) {
        auto const panes = container.panes();
        if (spot.index < 0 || static_cast<std::size_t>(spot.index) >= panes.size())
            return std::nullopt;
        pane = panes[static_cast<std::size_t>(spot.index)];
    }
    if (spot.kind == Kind::nowhere || !pane->model().snapshot())
        return std::nullopt;
    Target target{.pane = pane,
                  .place = {.connection = pane->connectionName(),
                            .folder = pane->pathOnShow(),
                            .isWritable = isWritable(*pane),
                            .isArchive = pane->archiveOnShow() != nullptr},
                  .shown = {.mark = spot.kind == Kind::tab ? Mark::none : Mark::pane}};
    auto folder = std::optional<std::string>();
    if (spot.kind == Kind::row)
        folder = folderAt(*pane, spot.index);
    else if (spot.kind == Kind::pathPart && pane->requestedPath() == target.place.folder)
        folder = folderAbove(target.place.folder, spot.index);
    if (folder && spot.kind == Kind::row)
        target.shown = {.mark = Mark::row, .row = spot.index};
    else if (folder)
        target.shown = {};
    if (folder)
        target.place.folder = *std::move(folder);
    return target;
}

/// Asked once for each pane and connection: the operands have a copy of each marked name.
bool DropHover::isWritable(PaneController &pane) const
{
    if (asked.pane != &pane || asked.connection != pane.connectionName())
        asked = {.pane = &pane,
                 .connection = pane.connectionName(),
                 .isWritable = pane.archiveOnShow() ? pane.archiveOnShow()->isChangeable()
                                                    : pane.browserOnShow()->writer() != nullptr};
    return asked.isWritable;
}

/// Nothing for a row that is no folder: what is dropped on it goes into the folder on show.
std::optional<std::string> DropHover::folderAt(PaneController const &pane, int row)
{
    auto const &rows = pane.model();
    auto const *const entry = rows.entry(row);
    if (!entry)
        return row == 0 && rows.hasParentRow() ? rows.parentPath() : std::nullopt;
    if (!entry->isDirectory())
        return std::nullopt;
    auto const above = pane.pathOnShow();
    return (above == "/" ? above : above + "/") + std::string(rows.name(row));
}

DropDecision DropHover::decide(Offer const &offer, std::optional<Target> const &target, DragKeys held) const
{
    return target ? DropDecision::of(*offer, target->place, held) : DropDecision::refused({});
}

/// What a drag rests on opens, whether a drop on it would be refused or not: the way may lead through it.
void DropHover::rest(DropSpot spot, std::optional<Target> const &target)
{
    auto const isFolder = target && target->shown.mark == DropDisplay::Target::Mark::row;
    if (spot.kind == DropSpot::Kind::tab) {
        resting.on("tab " + std::to_string(spot.index), tabDelay, [this, index = spot.index] {
            if (static_cast<std::size_t>(index) != container.activeIndex())
                container.select(static_cast<std::size_t>(index));
        });
    } else if (isFolder) {
        auto const isBelow = target->pane->model().entry(spot.index) != nullptr;
        resting.on("folder " + target->place.folder, folderDelay,
                   [pane = target->pane, isBelow, folder = target->place.folder] {
                       isBelow ? pane->navigate(folder) : pane->goUp();
                   });
    } else {
        resting.off();
    }
}

void DropHover::scroll(int pixels)
{
    auto const wasStill = pixelsAStep == 0;
    pixelsAStep = pixels;
    if (pixels == 0)
        scrolling.cancel();
    else if (wasStill)
        scrolling.set(EdgeScroll::delay);
}

void DropHover::show(DropDisplay::Target const &target)
{
    if (target == shown)
        return;
    shown = target;
    if (display)
        display->showDropTarget(target);
}

} // namespace tw
