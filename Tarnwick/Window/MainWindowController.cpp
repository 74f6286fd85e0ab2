#include "Tarnwick/Window/MainWindowController.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Provider/CommandHost.h"
#include "Tarnwick/Panes/PaneStatus.h"
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
    return connectionMenuItems(current == localConnection ? localTitle : current, hosts, current);
}

} // namespace

MainWindowController::MainWindowController(PaneController::Collaborators with, Connections &connections)
    : collaborators(std::move(with)), sources(connections)
{
    for (auto const side : bothSides) {
        panes[indexOf(side)] = PaneController::create(collaborators, sources.local(), localConnection);
        wire(side);
    }
}

void MainWindowController::wire(PaneSide side)
{
    // The panes are this object's own, and their callbacks go with it.
    auto &callbacks = pane(side)->callbacks;
    callbacks.onActivate = [this, side] { setActive(side); };
    callbacks.onSwitchSide = [this] { cmdSwapPanes(); };
    callbacks.onConnectionMenuWanted = [this, side] { openConnectionMenu(side); };
    callbacks.onConnectionPicked = [this, side](ConnectionItem const &item) { pickConnection(item, side); };
}

MainWindowController::~MainWindowController()
{
    // Somebody else may still hold a pane; it must not call here any more.
    for (auto const &each : panes)
        each->callbacks = {};
}

std::shared_ptr<PaneController> const &MainWindowController::pane(PaneSide side) const
{
    return panes[indexOf(side)];
}

void MainWindowController::start(PaneSpec::Sides const &sides)
{
    open(sides.left.value_or(PaneSpec::localHome()), pane(PaneSide::left));
    open(sides.right.value_or(PaneSpec::localHome()), pane(PaneSide::right));
    setActive(Settings::activeSide.read(collaborators.defaults));
    activePane().takeKeyboardFocus();
    readHosts(); // before anybody asks, so that the first menu is complete as a rule
}

void MainWindowController::open(PaneSpec destination, std::shared_ptr<PaneController> const &target)
{
    if (destination.connection == localConnection) {
        target->switchTo(sources.local(), localConnection, std::move(destination.path));
        return;
    }
    target->showConnecting(destination.connection);
    // Both from now on, so that they are about one attempt: one that has failed by the time that somebody asks for it
    // would be made again, with the password that was wrong.
    auto reaching = sources.reach(destination.connection);
    auto const connecting =
        SharedTask<std::shared_ptr<Browser>>::start(collaborators.mainContext, sources.ssh(destination.connection));
    auto const token = target->token();
    spawn({collaborators.mainContext, {}},
          openHost(std::move(reaching), connecting, {target, std::move(destination), token}));
}

std::shared_ptr<PaneController> MainWindowController::Journey::traveller() const
{
    auto target = pane.lock();
    return target && target->token() == token ? target : nullptr;
}

void MainWindowController::Journey::fail(std::exception_ptr const &failure) const
{
    auto const &host = destination.connection;
    if (auto const target = traveller()) {
        target->showConnectFailed(host, failure);
        return;
    }
    // The user may have gone on among what is remembered of the host.
    auto const target = pane.lock();
    if (target && target->connectionName() == host)
        target->showStatus(PaneStatus::connectFailed(host, failure));
}

Task<void> MainWindowController::openHost(Task<std::shared_ptr<Browser>> reaching,
                                          SharedTask<std::shared_ptr<Browser>> connecting, Journey begun)
{
    auto const journey = std::make_shared<Journey>(std::move(begun));
    auto const isThere = co_await showRemembered(std::move(reaching), journey);
    auto const outcome = co_await outcomeOf(connecting.wait());
    auto const target = journey->traveller();
    if (!outcome.value) {
        journey->fail(outcome.failure);
        co_return;
    }
    if (!target)
        co_return;
    if (isThere)
        target->showConnected();
    else
        co_await arriveOnHost(*outcome.value, journey);
}

/// Goes to the folder before the host is up, if a listing of it is known from another time. Whether it is on show then.
Task<bool> MainWindowController::showRemembered(Task<std::shared_ptr<Browser>> reaching,
                                                std::shared_ptr<Journey> journey)
{
    auto const reached = co_await outcomeOf(std::move(reaching));
    // Where no path was asked for, the host says where to begin.
    if (!reached.value || !journey->destination.pathWasExplicit)
        co_return false;
    auto const source = *reached.value;
    auto const remembered = co_await source->remembered(journey->destination.path);
    auto const target = journey->traveller();
    if (!remembered || !target)
        co_return false;
    target->switchToRemembered(source, journey->destination.connection, journey->destination.path);
    journey->token = target->token();
    co_return true;
}

Task<void> MainWindowController::arriveOnHost(std::shared_ptr<Browser> source, std::shared_ptr<Journey> journey)
{
    auto path = journey->destination.path;
    auto const host = std::dynamic_pointer_cast<CommandHost>(source->providerRef());
    if (!journey->destination.pathWasExplicit && host) {
        auto const home = co_await host->defaultDirectory();
        if (home.starts_with('/'))
            path = home;
    }
    if (auto const target = journey->traveller())
        target->switchTo(source, journey->destination.connection, std::move(path));
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
    spawn({collaborators.mainContext, {}}, completeMenus(sources.hosts(), knownHosts, {panes[0], panes[1]}));
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
        open({.connection = item.title, .path = "/", .pathWasExplicit = false}, target);
}

void MainWindowController::setActive(PaneSide side)
{
    active = side;
    Settings::activeSide.write(collaborators.defaults, side);
    pane(otherSide(side))->setActive(false);
    pane(side)->setActive(true);
}

void MainWindowController::start(Operation operation)
{
    if (!operation || !window || !activePane().model().snapshot())
        return;
    OperationContext context{.operands = activePane().operands(),
                             .pane = pane(active),
                             .panes = {panes.begin(), panes.end()},
                             .dialogs = window->dialogs()};
    spawn({collaborators.mainContext, {}}, operation(std::move(context)));
}

void MainWindowController::cmdConnect()
{
    openConnectionMenu(active);
}

void MainWindowController::cmdRefresh()
{
    activePane().refresh();
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

void MainWindowController::cmdToggleHidden()
{
    activePane().toggleHidden();
}

void MainWindowController::cmdCloseWindow()
{
    if (window)
        window->closeWindow();
}

} // namespace tw
