#pragma once

#include "Tarnwick/Toolkit/Table/PaneIcons.h"
#include "Tarnwick/Window/PaneContainer.h"

#include <QWidget>

namespace tw {

class DropHover;
class PaneView;
class TabBarView;

/// One side on screen: its tabs, and the pane of the one that is selected.
///
/// There is one view for all panes of a side. A tab that is not shown costs its listing and nothing of the toolkit.
///
/// Lifetime: `container`, `defaults` and `icons` outlive it.
class PaneContainerView final : public QWidget, private TabsDisplay {
public:
    PaneContainerView(PaneContainer &container, Defaults &defaults, PaneIcons &icons, QWidget *parent = nullptr);
    ~PaneContainerView() override;

    PaneView &pane() const { return *view; }

    TabBarView &tabBar() const { return *bar; }

    /// Takes what is dragged over the side. `hover` outlives this.
    void acceptDrops(DropHover &hover);

private:
    void showTabs(std::vector<TabItem> const &items, std::size_t selected) override;
    void showPane(std::shared_ptr<PaneController> const &pane) override;

    void connectBar();

    PaneContainer &tabs;
    TabBarView *const bar;
    PaneView *const view;
};

} // namespace tw
