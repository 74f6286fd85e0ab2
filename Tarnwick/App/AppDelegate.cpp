#include "Tarnwick/App/AppDelegate.h"

#include "TWCore/Async/Outcome.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/ExitDeadline.h"
#include "Tarnwick/Connections/ConnectionRegistry.h"
#include "Tarnwick/Toolkit/ColorScheme.h"
#include "Tarnwick/Toolkit/SessionWatch.h"
#include "Tarnwick/Toolkit/ToolTipDelay.h"
#include "Tarnwick/Window/AboutDialog.h"
#include "Tarnwick/Window/WelcomeWindow.h"

#include <QApplication>
#include <QEventLoop>
#include <QPointer>

namespace tw {

namespace {

/// How long the program may take to end. No host can hold it back for longer.
constexpr std::chrono::milliseconds timeToEnd{2000};

constexpr auto toolTipDelayKey = "NSInitialToolTipDelay";

int toolTipDelay(Defaults const &defaults)
{
    auto isNumber = false;
    auto const stored = QString::fromStdString(defaults.text(toolTipDelayKey).value_or("")).toInt(&isNumber);
    return isNumber && stored >= 0 ? stored : ToolTipDelay::usual;
}

/// Connecting to a bus waits for it, which is nothing for the main context.
Task<QDBusConnection> systemBus(EngineRuntime *engine)
{
    return engine->workers().run(WorkPriority::background, [] { return SessionWatch::systemBus(); });
}

Task<void> passOn(Task<QDBusConnection> connecting, std::function<void(QDBusConnection)> use)
{
    auto const bus = co_await std::move(connecting);
    use(bus);
}

Task<void> shutDown(Task<void> logging, ConnectionRegistry *connections, std::function<void()> done)
{
    co_await std::move(logging);
    // They end in some way, and that is all that is wanted now.
    co_await outcomeOf(connections->giveUpAttempts());
    co_await outcomeOf(connections->shutdownAll());
    done();
}

} // namespace

AppDelegate::AppDelegate(Collaborators collaborators)
    : with(std::move(collaborators)),
      lifeLog({.mainContext = with.mainContext, .clock = with.engine.clock(), .file = with.lifeLog})
{
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching(PaneSpec::Sides const &sides)
{
    lifeLog.begin(with.version.empty() ? std::nullopt : std::optional(with.version));
    QApplication::setStyle(new ToolTipDelay(toolTipDelay(with.defaults)));
    // Quitting closes the windows as well, and is then not their doing.
    connect(qApp, &QGuiApplication::lastWindowClosed, this, [this] {
        if (!isAskedToQuit)
            applicationShouldTerminateAfterLastWindowClosed();
    });
    signals = std::make_unique<TerminationSignals>(with.engine.io(), with.mainContext, [this](int /*signal*/) {
        isAskedToQuit = true;
        QApplication::quit();
    });

    controller = std::make_unique<MainWindowController>(
        PaneController::Collaborators{with.mainContext, with.engine.clock(), with.defaults}, with.connections);
    window = std::make_unique<MainWindow>(*controller, with.defaults);
    window->onAbout = [this] { showAbout(); };
    colorScheme = std::make_unique<ColorScheme>(ColorScheme::sessionBus());
    colorScheme->start([this] {
        window->show();
        window->activateWindow();
        WelcomeWindow::showIfFirstRun(with.defaults, *window);
    });
    controller->start(sides);
    watchSession();
}

void AppDelegate::watchSession()
{
    spawn({with.mainContext, {}}, passOn(systemBus(&with.engine), [self = QPointer(this)](QDBusConnection const &bus) {
              if (self)
                  self->session =
                      std::make_unique<SessionWatch>(bus, SessionWatch::sessionOfThisProcess(),
                                                     [log = &self->lifeLog](SessionEvent event) { log->note(event); });
          }));
}

bool AppDelegate::applicationShouldTerminateAfterLastWindowClosed()
{
    lifeLog.note(
        "last window closed — quitting (windows: " + std::to_string(QGuiApplication::topLevelWindows().size()) + ")");
    return true;
}

void AppDelegate::applicationWillTerminate()
{
    lifeLog.note("quit");
    setExitDeadline(timeToEnd);
    signals.reset();
    session.reset();
    colorScheme.reset();
    window.reset();
    controller.reset();
    awaitShutdown();
}

/// Takes the connections down, in the event loop, since that is where their answer arrives.
void AppDelegate::awaitShutdown()
{
    QEventLoop loop;
    auto isDone = false;
    spawn({with.mainContext, {}}, shutDown(lifeLog.end(), &with.connections, [&] {
              isDone = true;
              loop.quit();
          }));
    while (!isDone)
        loop.exec();
    // Others who waited for the same as we did are behind us in the queue.
    while (with.mainContext->runPending() > 0) {
    }
}

void AppDelegate::showAbout()
{
    AboutDialog(QString::fromStdString(with.version), window.get()).exec();
}

} // namespace tw
