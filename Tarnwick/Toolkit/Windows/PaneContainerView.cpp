#include "Tarnwick/Toolkit/Windows/PaneContainerView.h"

#include "Tarnwick/Toolkit/Widgets/TabBarView.h"
#include "Tarnwick/Toolkit/Windows/DropArea.h"
#include "Tarnwick/Toolkit/Windows/PaneView.h"

#include <QVBoxLayout>

namespace tw {

PaneContainerView::PaneContainerView(PaneContainer &container, Defaults &defaults, PaneIcons &icons, QWidget *parent)
    : QWidget(parent),
      tabs(container),
      bar(new TabBarView(this)),
      view(new PaneView(container.activePane(), defaults, icons, this))
{
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(bar);
    column->addWidget(view, 1);
    connectBar();
    tabs.attach(*this);
}

PaneContainerView::~PaneContainerView()
{
    tabs.detach();
}

void PaneContainerView::acceptDrops(DropHover &hover)
{
    auto *const drops = new DropArea(hover, *view, bar->strip(), *this);
    view->onRowsReloaded = [drops] { drops->rowsChanged(); };
}

void PaneContainerView::connectBar()
{
    auto const at = [](int index) { return static_cast<std::size_t>(index); };
    bar->onSelect = [this, at](int index) { tabs.select(at(index)); };
    bar->onClose = [this, at](int index) { tabs.closeTab(at(index)); };
    bar->onCloseOthers = [this, at](int index) { tabs.closeOthers(at(index)); };
    bar->onDuplicate = [this, at](int index) { tabs.duplicateTab(at(index)); };
    bar->onNew = [this] { tabs.duplicateCurrentTab(); };
    bar->onReorder = [this, at](int from, int to) { tabs.moveTab(at(from), at(to)); };
}

void PaneContainerView::showTabs(std::vector<TabItem> const &items, std::size_t selected)
{
    std::vector<TabBarView::Item> shown;
    for (auto const &item : items)
        shown.push_back({.title = QString::fromStdString(item.title),
                         .toolTip = QString::fromStdString(item.toolTip),
                         .isRemote = item.isRemote});
    bar->showTabs(shown, static_cast<int>(selected));
}

void PaneContainerView::showPane(std::shared_ptr<PaneController> const &pane)
{
    view->showPane(pane);
}

} // namespace tw
