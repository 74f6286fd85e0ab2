#include "Tarnwick/Window/MainWindowController.h"

#include "TWCore/Async/Outcome.h"
#include "Tarnwick/Operations/Delete.h"
#include "Tarnwick/Operations/MarkByMask.h"
#include "Tarnwick/Operations/Rename.h"
#include "Tarnwick/Settings/Settings.h"

namespace tw {

namespace {

constexpr std::array bothSides{PaneSide::left, PaneSide::right};

constexpr std::size_t indexOf(PaneSide side)
{
    return side == PaneSide::left ? 0 : 1;
}

constexpr PaneSide otherSide(PaneSide side)
{
    return side == PaneSide::left ? PaneSide::right : PaneSide::left;
}

std::vector<ConnectionItem> menuFor(PaneController const &pane, std::optional<std::vector<std::string>> const &hosts)
{
    auto const &current = pane.connectionName();
    return connectionMenuItems(current == localConnection ? Text(localTitle) : Text(current), hosts, current);
}

} // namespace

MainWindowController::MainWindowController(PaneController::Collaborators with, Connections &connections,
                                           std::shared_ptr<SessionMemory> session, WindowServices given)
    : collaborators(std::move(with)), sources(connections), memory(std::move(session)), services(std::move(given))
{
    for (auto const side : bothSides) {
        containers[indexOf(side)] = makeContainer(side);
        hovers[indexOf(side)] = makeDrops(side);
    }
    rereadAfterUploads();
}

std::unique_ptr<PaneContainer> MainWindowController::makeContainer(PaneSide side)
{
    return std::make_unique<PaneContainer>(
        collaborators, sources,
        PaneContainer::Events{
            .configurePane = [this, side](PaneController &pane) { wire(pane, side); },
            .onTabsChanged = [this] { rememberSides(); },
            .onSelected =
                [this, side] {
                    setActive(side);
                    activePane().takeKeyboardFocus();
                },
            .open = [this](PaneSpec place,
                           std::shared_ptr<PaneController> const &pane) { open(std::move(place), pane); }});
}

void MainWindowController::wire(PaneController &pane, PaneSide side)
{
    // The panes are this object's own, and their callbacks go with it.
    pane.showCut(cut);
    auto &callbacks = pane.callbacks;
    callbacks.onActivate = [this, side] { setActive(side); };
    callbacks.onSwitchSide = [this] { cmdSwapPanes(); };
    callbacks.onRenameRequested = [this, &pane](std::string from, std::string to) {
        if (window)
            spawn({collaborators.mainContext, {}},
                  performRename(contextOf(pane.shared_from_this()), std::move(from), std::move(to)));
    };
    callbacks.onDeleteRequested = [this, side] {
        setActive(side);
        start(deleteOperands);
    };
    callbacks.onMaskWanted = [this](PaneModel::Marks change) {
        start(change == PaneModel::Marks::insert ? markByMask : unmarkByMask);
    };
    if (services.opening.applications)
        callbacks.onOpenFile = [this, &pane](std::string const &path) { openFile(pane.shared_from_this(), path); };
    callbacks.onConnectionMenuWanted = [this, side] { openConnectionMenu(side); };
    callbacks.onDetailsWanted = [this](Text title, std::string words) {
        if (window)
            spawn({collaborators.mainContext, {}}, window->dialogs()->details(std::move(title), std::move(words)));
    };
    callbacks.onConnectionPicked = [this, side](ConnectionItem const &item) { pickConnection(item, side); };
    callbacks.onPreviewRequested = [this, side] {
        setActive(side);
        cmdPreview();
    };
    callbacks.onEscape = [this] { return previews && previews->close(); };
    callbacks.onCursorMoved = [this, &pane](std::optional<std::string> name) {
        followPreview();
        if (memory && !pane.archiveOnShow())
            memory->remember(pane.connectionName(), pane.pathOnShow(), std::move(name));
    };
    if (!memory)
        return;
    callbacks.onPlaceGone = [this](PaneSpec const &place) { memory->forget(place.connection, place.path); };
}

PaneContainer &MainWindowController::container(PaneSide side) const
{
    return *containers[indexOf(side)];
}

void MainWindowController::start(PaneSpec::Sides const &sides)
{
    restore(PaneSide::left, sides.left);
    restore(PaneSide::right, sides.right);
    setActive(Settings::activeSide.read(collaborators.defaults));
    activePane().takeKeyboardFocus();
    hasStarted = true;
    readHosts(); // before anybody asks, so that the first menu is complete as a rule
}

void MainWindowController::restore(PaneSide side, std::optional<PaneSpec> const &override)
{
    if (override)
        container(side).restore(*override);
    else if (memory && memory->sides())
        container(side).restore(memory->sides()->at(indexOf(side)));
    else
        container(side).restore(PaneSpec::localHome());
}

void MainWindowController::rememberSides()
{
    if (memory && hasStarted)
        memory->rememberSides(container(PaneSide::left).state(), container(PaneSide::right).state());
}

void MainWindowController::rememberAll()
{
    rememberSides();
    if (memory)
        memory->flush();
}

void MainWindowController::open(PaneSpec destination, std::shared_ptr<PaneController> const &target)
{
    auto const known = memory ? memory->location(destination.connection) : std::nullopt;
    if (known && !destination.pathWasExplicit) {
        destination.path = known->path;
        destination.pathWasExplicit = true;
    }
    if (known && known->path == destination.path && destination.cursor.empty())
        destination.cursor = known->cursor.value_or(std::string());
    target->open(std::move(destination), sources);
}

void MainWindowController::openInNewTab(PaneSpec const &place, std::optional<PaneSide> side)
{
    container(side.value_or(active)).openInNewTab(place);
}

void MainWindowController::revalidateAfterWake()
{
    for (auto const &each : containers)
        each->revalidateAfterWake();
}

void MainWindowController::checkForChanges()
{
    for (auto const side : bothSides)
        pane(side)->checkForChanges();
}

void MainWindowController::openConnectionMenu(PaneSide side)
{
    auto const &target = pane(side);
    setActive(side);
    target->takeKeyboardFocus(); // where it is when the menu is gone
    target->openConnectionMenu(menuFor(*target, *knownHosts));
    readHosts();
}

void MainWindowController::readHosts()
{
    spawn({collaborators.mainContext, {}},
          completeMenus(sources.hosts(), knownHosts, {pane(PaneSide::left), pane(PaneSide::right)}));
}

Task<void> MainWindowController::completeMenus(Task<std::vector<std::string>> reading,
                                               std::shared_ptr<KnownHosts> known, WeakPanes panes)
{
    auto const outcome = co_await outcomeOf(std::move(reading));
    auto names = outcome.value.value_or(std::vector<std::string>());
    if (*known == names)
        co_return;
    *known = std::move(names);
    for (auto const &weak : panes) {
        if (auto const each = weak.lock())
            each->updateConnectionMenu(menuFor(*each, *known));
    }
}

void MainWindowController::pickConnection(ConnectionItem const &item, PaneSide side)
{
    auto const &target = pane(side);
    setActive(side);
    target->takeKeyboardFocus();
    if (item.kind == ConnectionItem::Kind::local)
        open(PaneSpec::localHome(), target);
    else if (item.kind == ConnectionItem::Kind::host && item.isEnabled)
        open({.connection = item.host, .path = "/", .pathWasExplicit = false}, target);
}

void MainWindowController::setActive(PaneSide side)
{
    active = side;
    Settings::activeSide.write(collaborators.defaults, side);
    pane(otherSide(side))->setActive(false);
    pane(side)->setActive(true);
    followPreview();
}

void MainWindowController::start(Operation operation)
{
    if (!operation || !window || !activePane().model().snapshot() || !pane(active)->hasAllRows())
        return;
    spawn({collaborators.mainContext, {}}, operation(contextOf(pane(active))));
}

OperationContext MainWindowController::contextOf(std::shared_ptr<PaneController> const &of) const
{
    auto const isLeft = of == pane(PaneSide::left);
    OperationContext context{.operands = of->operands(),
                             .pane = of,
                             .panes = {},
                             .dialogs = window->dialogs(),
                             .target = pane(isLeft ? PaneSide::right : PaneSide::left)->operands(),
                             .connections = &sources,
                             .makeTransfer = services.transfers,
                             .makeArchives = services.archives,
                             .makeScratchFolder = services.dragFolders,
                             .claims = services.claims,
                             .opening = services.opening,
                             .view = [this, weak = std::weak_ptr(of)](Operands const &where, FileToOpen const &file) {
                                 if (auto const asked = weak.lock()) // the panes go with this
                                     view(*asked, where, file);
                             }};
    context.target.names.clear();
    for (auto const &each : containers) {
        for (auto const &one : each->panes())
            context.panes.push_back(one);
    }
    return context;
}

void MainWindowController::cmdConnect()
{
    openConnectionMenu(active);
}

void MainWindowController::cmdRefresh()
{
    activePane().refresh();
}

void MainWindowController::cmdBack()
{
    activePane().goBack();
}

void MainWindowController::cmdForward()
{
    activePane().goForward();
}

void MainWindowController::cmdEditPath()
{
    activePane().editPath();
}

void MainWindowController::cmdSwapPanes()
{
    // The pane that gets the keyboard reports it, and becomes the active one by that.
    pane(otherSide(active))->takeKeyboardFocus();
}

void MainWindowController::cmdEqualizePanes()
{
    if (window)
        window->equalizePanes();
}

bool MainWindowController::hasBackgroundWork() const
{
    return window && window->hasBackgroundWork();
}

void MainWindowController::cmdBackgroundWork()
{
    if (window)
        window->goToBackgroundWork();
}

void MainWindowController::cmdCustomizeToolBar()
{
    if (window)
        window->customizeToolBar();
}

void MainWindowController::cmdCustomizeColumns()
{
    if (window)
        window->customizeColumns();
}

void MainWindowController::cmdToggleHidden()
{
    activePane().toggleHidden();
}

bool MainWindowController::refreshesItself() const
{
    return Settings::autoRefresh.read(collaborators.defaults);
}

void MainWindowController::cmdToggleAutoRefresh()
{
    auto const isOn = !refreshesItself();
    Settings::autoRefresh.write(collaborators.defaults, isOn); // each pane follows the setting
    activePane().showStatus(isOn ? "folders refresh themselves" : "auto refresh off — ⌘R to reload");
}

void MainWindowController::cmdMarkAll()
{
    activePane().markAll(PaneModel::Marks::insert);
}

void MainWindowController::cmdUnmarkAll()
{
    activePane().markAll(PaneModel::Marks::remove);
}

void MainWindowController::cmdInvertMarks()
{
    activePane().invertMarks();
}

void MainWindowController::cmdRename()
{
    activePane().beginRename();
}

void MainWindowController::cmdMinimizeWindow()
{
    if (window)
        window->minimizeWindow();
}

void MainWindowController::cmdTargetIsSource()
{
    if (activePane().archiveOnShow())
        return activePane().refuse(); // its path leads nowhere outside
    pane(otherSide(active))->navigate(activePane().pathOnShow());
}

void MainWindowController::cmdChangeTextSize(double by)
{
    auto &defaults = collaborators.defaults;
    Settings::paneFontSize.write(defaults, Settings::paneFontSize.read(defaults) + by);
}

void MainWindowController::cmdUsualTextSize()
{
    Settings::paneFontSize.write(collaborators.defaults, Settings::paneFontSize.usual);
}

void MainWindowController::copyPaths(CopiedPath::Style style)
{
    auto const what = activePane().operands();
    std::vector<std::string> paths;
    for (auto const &name : what.names)
        paths.push_back(what.pathOf(name));
    if (auto above = activePane().model().parentPath(); paths.empty() && activePane().cursorRow() && above)
        paths.push_back(*std::move(above)); // the cursor is on the row of the folder above
    if (paths.empty() || !window)
        return;
    CopiedPath::Place const place{.connection = what.connection,
                                  .homeFolder = PaneSpec::localHome().path,
                                  .otherPath = pane(otherSide(active))->pathOnShow()};
    std::string text;
    for (auto const &path : paths)
        text += (text.empty() ? "" : "\n") + CopiedPath::render(path, style, place);
    window->copyText(text);
    auto const count = paths.size();
    activePane().showStatus(count == 1 ? Text("copied %@", {text}) : Text("copied %d paths", {std::to_string(count)}));
}

} // namespace tw
