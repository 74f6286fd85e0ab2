#pragma once

#include "TWEngine/Editing/EditStaging.h"
#include "TWEngine/Platform/Scratch.h"
#include "TWEngine/Runtime/MainContext.h"
#include "TWEngine/Runtime/TerminationSignals.h"
#include "Tarnwick/Commands/CommandTarget.h"
#include "Tarnwick/Instance/OpenRequest.h"
#include "Tarnwick/Lifecycle/LifeLog.h"
#include "Tarnwick/Panes/PaneSpec.h"
#include "Tarnwick/Toolkit/Program/StartupToken.h"
#include "Tarnwick/Toolkit/Windows/MainWindow.h"

#include <QObject>
#include <QPointer>

#include <chrono>
#include <functional>
#include <memory>
#include <semaphore>

namespace tw {

class AboutDialog;
class Applications;
class EditSessions;
class FileManagerService;
class ColorScheme;
class ConnectionRegistry;
class EngineRuntime;
class SessionWatch;
class WindowLoginPrompter;
class JobWatch;

/// The first and the last minute of the program: what is made in which order, what ends it, and what it does then.
///
/// Threads: main context only.
/// Lifetime: what it is made with outlives it.
class AppDelegate final : public QObject, public CommandTarget {
public:
    struct Collaborators {
        EngineRuntime &engine;
        std::shared_ptr<MainContext> mainContext;
        Defaults &defaults;
        ConnectionRegistry &connections;
        /// Learns of the window; null: no login asks.
        std::shared_ptr<WindowLoginPrompter> logins = nullptr;
        std::string lifeLog; ///< the file
        std::string version;
        Scratch::Place scratch = {};       ///< emptied at launch and at the end
        EditStaging::Place edits = {};     ///< files of hosts that are being edited
        std::string settingsSetAside = {}; ///< the copy of a file that could not be read; empty: there is none
        /// Waits on this thread for the end of all connections, and for no longer than the limit. A test need not wait.
        std::function<void(std::binary_semaphore &, std::chrono::nanoseconds limit)> waitForShutdown =
            [](std::binary_semaphore &done, std::chrono::nanoseconds limit) {
                static_cast<void>(done.try_acquire_for(limit));
            };
    };

    explicit AppDelegate(Collaborators collaborators);
    ~AppDelegate() override;

    /// Opens the main window on these folders. The event loop runs, or is about to.
    /// Each of `besides` gets a tab of its own.
    void applicationDidFinishLaunching(PaneSpec::Sides const &sides,
                                       std::vector<OpenRequest::Place> const &besides = {});

    /// What another start of the program asks for: a tab for each place, and the window before all others.
    void open(OpenRequest const &request);

    /// Always; notes it.
    bool applicationShouldTerminateAfterLastWindowClosed();

    /// Behind the event loop: takes the windows down, and then waits two seconds on this thread. The caller ends the
    /// process as it is behind it; nothing of the engine may be awaited any more.
    void applicationWillTerminate();

    /// The commands that are about the program.
    std::optional<CommandState> stateOf(Command command) const override;
    void perform(Command command) override;

    /// Once; asked for again, it comes to the front.
    void showAbout();

    /// The window, between launch and end.
    MainWindow *mainWindow() const noexcept { return window.get(); }

private:
    /// Without a question.
    void quit();
    void watchSession();
    void sessionChanged(SessionEvent event);
    void awaitShutdown();
    void findOutWhetherChosen() const;
    void removeScratch(std::function<void(Scratch::Place const &)> removal) const;

    Collaborators const with;
    LifeLog lifeLog;
    StartupToken startupToken;
    std::shared_ptr<Applications> const applications;
    std::shared_ptr<ClaimedNames> const claims = std::make_shared<ClaimedNames>();
    std::shared_ptr<EditSessions> const edits;
    std::unique_ptr<FileManagerService> fileManager;
    bool isAskedToQuit = false; ///< by the user or a signal, not by a window that was closed
    std::unique_ptr<MainWindowController> controller;
    std::unique_ptr<MainWindow> window;
    QPointer<AboutDialog> about; ///< owned by the window; null when it is closed
    std::unique_ptr<ColorScheme> colorScheme;
    std::unique_ptr<SessionWatch> session;
    std::unique_ptr<JobWatch> jobWatch;
    std::unique_ptr<TerminationSignals> signals;
};

} // namespace tw
