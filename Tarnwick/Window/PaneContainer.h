#pragma once

#include "Tarnwick/Connections/Connections.h"
#include "Tarnwick/Panes/PaneController.h"
#include "Tarnwick/Panes/PaneSpec.h"
#include "Tarnwick/Session/SessionState.h"
#include "Tarnwick/Window/TabsDisplay.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tw {

/// One side of the window: a list of panes, of which one shows, each with a tab. It is never empty.
///
/// A tab that was remembered sleeps until it is shown first: its pane asks nobody anything, and a host with twenty tabs
/// from last time is not reached for those that nobody looks at. What the tab says, and what is kept of it for the next
/// start, is what was remembered.
///
/// Threads: main context only.
/// Lifetime: outlives its display and the panes' views; what it is made with outlives it.
class PaneContainer {
public:
    enum class Select { no, yes };

    struct Events {
        /// A pane is new, and is connected to its owner here.
        std::function<void(PaneController &pane)> configurePane;
        /// What is to be kept for the next start has changed.
        std::function<void()> onTabsChanged;
        /// A tab was chosen: its pane is on show, and is to have the keyboard.
        std::function<void()> onSelected;
        /// Puts a pane on its place.
        std::function<void(PaneSpec place, std::shared_ptr<PaneController> const &pane)> open;
    };

    /// Has one pane, which shows nothing yet.
    PaneContainer(PaneController::Collaborators collaborators, Connections &connections, Events events);
    ~PaneContainer();

    PaneContainer(PaneContainer const &) = delete;
    PaneContainer &operator=(PaneContainer const &) = delete;

    void attach(TabsDisplay &display);

    void detach() { display = nullptr; }

    std::size_t tabCount() const noexcept { return tabs.size(); }

    std::size_t activeIndex() const noexcept { return active; }

    /// The pane on show.
    std::shared_ptr<PaneController> const &activePane() const { return tabs[active].pane; }

    std::vector<std::shared_ptr<PaneController>> panes() const;

    /// Adds a tab behind the others, which shows its rows as the first tab does. Null if there are too many.
    std::shared_ptr<PaneController> addTab(std::shared_ptr<Browser> browser, std::string connectionName, Select select);

    /// An index outside changes nothing, here and below.
    void select(std::size_t index);
    void selectNext();
    void selectPrevious();

    /// The only tab stays. The one that then has the active index shows, or the last one.
    void closeTab(std::size_t index);
    void closeOthers(std::size_t index);

    void moveTab(std::size_t from, std::size_t to);

    void duplicateCurrentTab() { duplicateTab(active); }

    void duplicateTab(std::size_t index);

    /// Opens a place in a new tab, which shows.
    void openInNewTab(PaneSpec place);

    /// Shows the rows of all panes as those of `pane`.
    void applyViewOptions(PaneController const &pane);

    /// In place of the tabs there are. `remembered` has at least one; all but the one that shows sleep.
    void restore(SideState const &remembered);

    /// In place of the tabs there are: one on a place.
    void restore(PaneSpec place);

    SideState state() const;

    /// The machine has slept: what hosts have told may be old. Shown at once, and elsewhere when a tab is shown.
    void revalidateAfterWake();

    void refreshTitles();

private:
    struct Tab {
        std::shared_ptr<PaneController> pane;
        std::optional<PaneSpec> asleep = {}; ///< where it wakes
        bool isStale = false;                ///< is read anew when it is shown

        PaneSpec place() const { return asleep ? *asleep : pane->place(); }

        PaneSpec placeToRemember() const { return asleep ? *asleep : pane->placeToRemember(); }
    };

    std::shared_ptr<PaneController> makePane(std::shared_ptr<Browser> browser, std::string connectionName);
    bool hasRoom();
    void reset();
    void show(std::size_t index);
    void remove(std::size_t index);
    void changed();

    PaneController::Collaborators const collaborators;
    Connections &sources;
    Events const events;
    std::vector<Tab> tabs;
    std::size_t active = 0;
    TabsDisplay *display = nullptr;
    std::vector<TabItem> shownItems;
    std::size_t shownIndex = 0;
};

} // namespace tw
