#include "Tarnwick/Window/PaneContainer.h"

#include "Tarnwick/Panes/PaneStatus.h"

#include <algorithm>

namespace tw {

namespace {

PaneState stateOf(PaneSpec const &place, ViewOptions const &options)
{
    return {.connection = place.connection,
            .path = place.pathWasExplicit ? place.path : std::string(),
            .sortKey = std::string(sortKeyText(options.sortKey)),
            .sortAscending = options.ascending,
            .showHidden = options.showHidden};
}

PaneSpec placeOf(PaneState const &state)
{
    if (!state.path.empty())
        return {.connection = state.connection, .path = state.path, .pathWasExplicit = true};
    auto const isLocal = state.connection == localConnection;
    return isLocal ? PaneSpec::localHome() : PaneSpec{.connection = state.connection, .path = "/"};
}

ViewOptions optionsOf(PaneState const &state)
{
    ViewOptions options;
    options.showHidden = state.showHidden.value_or(options.showHidden);
    if (auto const key = state.sortKey ? sortKeyFromText(*state.sortKey) : std::nullopt) {
        options.sortKey = *key;
        options.ascending = state.sortAscending.value_or(true);
    }
    return options;
}

} // namespace

PaneContainer::PaneContainer(PaneController::Collaborators with, Connections &connections, Events toTell)
    : collaborators(std::move(with)), sources(connections), events(std::move(toTell))
{
    tabs.push_back({.pane = makePane(sources.local(), localConnection)});
    refreshTitles();
}

PaneContainer::~PaneContainer()
{
    // Somebody else may still hold a pane; it must not call here any more.
    for (auto const &each : tabs)
        each.pane->callbacks = {};
}

std::shared_ptr<PaneController> PaneContainer::makePane(std::shared_ptr<Browser> browser, std::string connectionName)
{
    auto pane = PaneController::create(collaborators, std::move(browser), std::move(connectionName));
    pane->callbacks.onPlaceShown = [this] { refreshTitles(); };
    pane->callbacks.onLocationChanged = [this] { changed(); };
    pane->callbacks.onViewOptionsChanged = [this, each = pane.get()] {
        applyViewOptions(*each);
        changed();
    };
    events.configurePane(*pane);
    return pane;
}

void PaneContainer::attach(TabsDisplay &newDisplay)
{
    display = &newDisplay;
    display->showPane(activePane());
    display->showTabs(shownItems, shownIndex);
}

std::vector<std::shared_ptr<PaneController>> PaneContainer::panes() const
{
    std::vector<std::shared_ptr<PaneController>> all;
    for (auto const &each : tabs)
        all.push_back(each.pane);
    return all;
}

bool PaneContainer::hasRoom()
{
    if (tabs.size() < SideState::mostTabs)
        return true;
    activePane()->showStatus(PaneStatus::warning("there are too many tabs on this side"));
    return false;
}

std::shared_ptr<PaneController> PaneContainer::addTab(std::shared_ptr<Browser> browser, std::string connectionName,
                                                      Select choice)
{
    if (!hasRoom())
        return nullptr;
    auto pane = makePane(std::move(browser), std::move(connectionName));
    pane->adoptViewOptions(tabs.front().pane->model().viewOptions());
    tabs.push_back({.pane = pane});
    if (choice == Select::yes)
        select(tabs.size() - 1);
    else
        changed();
    return pane;
}

void PaneContainer::select(std::size_t index)
{
    if (index >= tabs.size())
        return;
    show(index);
    events.onSelected();
    changed();
}

void PaneContainer::selectNext()
{
    select((active + 1) % tabs.size());
}

void PaneContainer::selectPrevious()
{
    select((active + tabs.size() - 1) % tabs.size());
}

void PaneContainer::show(std::size_t index)
{
    auto const before = activePane();
    active = index;
    auto &tab = tabs[active];
    if (before != tab.pane)
        before->setActive(false);
    if (display)
        display->showPane(tab.pane);
    auto const isStale = std::exchange(tab.isStale, false);
    if (auto const place = std::exchange(tab.asleep, std::nullopt))
        events.open(*place, tab.pane);
    else if (isStale)
        tab.pane->revalidate();
    else if (before != tab.pane)
        tab.pane->checkForChanges();
}

void PaneContainer::closeTab(std::size_t index)
{
    if (tabs.size() < 2 || index >= tabs.size())
        return;
    remove(index);
    select(std::min(active, tabs.size() - 1));
}

/// The view of its pane goes over to another one with the next `show`.
void PaneContainer::remove(std::size_t index)
{
    auto const closed = tabs[index].pane;
    tabs.erase(tabs.begin() + std::ptrdiff_t(index));
    active = std::min(active, tabs.size() - 1);
    closed->endRename(PaneController::NameEnd::committed); // a name that was typed is not lost with its tab
    closed->callbacks = {};
    closed->stopWatching();
    closed->setActive(false);
}

void PaneContainer::closeOthers(std::size_t index)
{
    if (index >= tabs.size())
        return;
    auto const kept = tabs[index].pane;
    for (auto at = tabs.size(); at-- > 0;) {
        if (tabs[at].pane != kept)
            remove(at);
    }
    select(0);
}

void PaneContainer::moveTab(std::size_t from, std::size_t to)
{
    if (from >= tabs.size() || to >= tabs.size() || from == to)
        return;
    auto const shown = activePane();
    auto const source = tabs.begin() + std::ptrdiff_t(from);
    auto const target = tabs.begin() + std::ptrdiff_t(to);
    if (from < to)
        std::rotate(source, source + 1, target + 1);
    else
        std::rotate(target, source, source + 1);
    active = std::size_t(std::ranges::find(tabs, shown, &Tab::pane) - tabs.begin());
    changed();
}

void PaneContainer::duplicateTab(std::size_t index)
{
    if (index >= tabs.size())
        return;
    auto const place = tabs[index].place();
    auto const source = tabs[index].pane;
    if (tabs[index].asleep || place.connection != source->connectionName()) {
        openInNewTab(tabs[index].placeToRemember());
        return;
    }
    auto const operands = source->operands();
    auto const cursor = place.path == operands.path ? std::string(source->cursorName()) : std::string();
    if (auto const copy = addTab(operands.browser, place.connection, Select::yes)) {
        copy->shareArchive(*source);
        copy->navigate(place.path, cursor);
    }
}

void PaneContainer::openInNewTab(PaneSpec place)
{
    if (auto const pane = addTab(sources.local(), localConnection, Select::yes))
        events.open(std::move(place), pane);
}

void PaneContainer::applyViewOptions(PaneController const &pane)
{
    auto const options = pane.model().viewOptions();
    for (auto const &each : tabs)
        each.pane->adoptViewOptions(options);
}

/// The first pane stays, since it may be on show.
void PaneContainer::reset()
{
    while (tabs.size() > 1)
        remove(tabs.size() - 1);
    tabs.front().asleep.reset();
    tabs.front().isStale = false;
}

void PaneContainer::restore(SideState const &remembered)
{
    reset();
    for (std::size_t at = 0; at < std::min(remembered.tabs.size(), SideState::mostTabs); ++at) {
        if (at > 0)
            tabs.push_back({.pane = makePane(sources.local(), localConnection)});
        tabs[at].asleep = placeOf(remembered.tabs[at]);
        tabs[at].pane->adoptViewOptions(optionsOf(remembered.tabs[at]));
    }
    show(std::min(remembered.active, tabs.size() - 1));
    refreshTitles();
}

void PaneContainer::restore(PaneSpec place)
{
    reset();
    show(0);
    events.open(std::move(place), activePane());
    refreshTitles();
}

SideState PaneContainer::state() const
{
    SideState side{.active = active};
    for (auto const &each : tabs)
        side.tabs.push_back(stateOf(each.placeToRemember(), each.pane->model().viewOptions()));
    return side;
}

void PaneContainer::revalidateAfterWake()
{
    for (std::size_t at = 0; at < tabs.size(); ++at) {
        if (at == active)
            tabs[at].pane->revalidate();
        else
            tabs[at].isStale = true;
    }
}

void PaneContainer::changed()
{
    refreshTitles();
    events.onTabsChanged();
}

void PaneContainer::refreshTitles()
{
    std::vector<TabItem> items;
    for (auto const &each : tabs)
        items.push_back(TabItem::of(each.asleep ? *each.asleep : each.pane->placeForDisplay()));
    if (items == shownItems && active == shownIndex)
        return;
    shownItems = std::move(items);
    shownIndex = active;
    if (display)
        display->showTabs(shownItems, shownIndex);
}

} // namespace tw
