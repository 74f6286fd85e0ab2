#pragma once

#include "Tarnwick/Dragging/DragRest.h"
#include "Tarnwick/Dragging/DropDecision.h"
#include "Tarnwick/Panes/PaneController.h"
#include "Tarnwick/Window/DropDisplay.h"
#include "Tarnwick/Window/DropSpot.h"

#include <functional>
#include <memory>
#include <optional>

namespace tw {

class PaneContainer;

/// A drag over one side of the window: what a drop would do, what opens under it, and what scrolls.
///
/// Threads: main context only.
/// Lifetime: `side` outlives it; it outlives its display.
class DropHover {
public:
    using Offer = std::shared_ptr<DragOffer const>;

    /// Files that were dropped.
    struct Drop {
        Offer offer;
        std::shared_ptr<PaneController> pane;
        std::string connection; ///< that the pane had
        std::string folder;
        TransferKind kind = TransferKind::copy;
    };

    /// A tab under a drag opens soon: people wait for it. A folder takes longer, since a drop on its row is as usual.
    static constexpr std::chrono::milliseconds tabDelay{600};
    static constexpr std::chrono::milliseconds folderDelay{800};

    DropHover(PaneController::Collaborators const &collaborators, PaneContainer &side,
              std::function<void(Drop drop)> onDropped);

    void attach(DropDisplay &newDisplay) { display = &newDisplay; }

    void detach() { display = nullptr; }

    /// Why the drag is reported.
    enum class Cause {
        pointer, ///< it has moved, or the keys have changed
        rows,    ///< others are under it, while the pointer rests
    };

    DropDecision over(Offer const &offer, DropSpot spot, DragKeys held, Cause cause = Cause::pointer);

    /// The drag has gone, or was cancelled.
    void leave();

    /// The answer is what is done, or why nothing is.
    DropDecision drop(Offer const &offer, DropSpot spot, DragKeys held);

private:
    struct Target {
        std::shared_ptr<PaneController> pane;
        DropPlace place;
        DropDisplay::Target shown;
    };

    struct Asked {
        PaneController const *pane = nullptr; ///< only compared
        std::string connection;
        bool isWritable = false;
    };

    std::optional<Target> targetAt(DropSpot spot) const;
    static std::optional<std::string> folderAt(PaneController const &pane, int row);
    bool isWritable(PaneController &pane) const;
    DropDecision decide(Offer const &offer, std::optional<Target> const &target, DragKeys held) const;
    void rest(DropSpot spot, std::optional<Target> const &target);
    void scroll(int pixels);
    void show(DropDisplay::Target const &target);

    PaneContainer &container;
    std::function<void(Drop drop)> const onDropped;
    DropDisplay *display = nullptr;
    DropDisplay::Target shown;
    mutable Asked asked;
    int pixelsAStep = 0;
    DragRest resting;
    Alarm scrolling;
};

} // namespace tw
