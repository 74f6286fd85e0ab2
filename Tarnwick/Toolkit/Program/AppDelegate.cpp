#include "Tarnwick/Toolkit/Program/AppDelegate.h"

#include "TWCore/Async/OnExecutor.h"
#include "TWEngine/Applications/DesktopApplications.h"
#include "TWEngine/Archives/ArchiveEngine.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Transfer/TransferEngine.h"
#include "Tarnwick/Clipboard/PastedFile.h"
#include "Tarnwick/Connections/ArchiveBrowsers.h"
#include "Tarnwick/Connections/ConnectionRegistry.h"
#include "Tarnwick/Editing/TerminalEditor.h"
#include "Tarnwick/Operations/ClaimSteps.h"
#include "Tarnwick/Preview/FilePreviews.h"
#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Appearance/ColorScheme.h"
#include "Tarnwick/Toolkit/Appearance/ProgramStyle.h"
#include "Tarnwick/Toolkit/Clipboard/QtClipboard.h"
#include "Tarnwick/Toolkit/Editing/EditStrip.h"
#include "Tarnwick/Toolkit/Preview/DesktopThumbnailer.h"
#include "Tarnwick/Toolkit/Program/FileManagerService.h"
#include "Tarnwick/Toolkit/Program/JobWatch.h"
#include "Tarnwick/Toolkit/Program/SessionWatch.h"
#include "Tarnwick/Toolkit/Program/WindowLoginPrompter.h"
#include "Tarnwick/Toolkit/Windows/AboutDialog.h"
#include "Tarnwick/Toolkit/Windows/DragOut.h"
#include "Tarnwick/Toolkit/Windows/WelcomeWindow.h"

#include <QApplication>

namespace tw {

namespace {

/// How long the program takes to end. No host can hold it back for longer.
constexpr std::chrono::seconds timeToEnd{2};

/// Connecting to a bus waits for it, which is nothing for the main context.
Task<QDBusConnection> systemBus(EngineRuntime *engine)
{
    return engine->workers().run(WorkPriority::background, [] { return SessionWatch::systemBus(); });
}

/// A clipboard manager takes a few milliseconds for what people copy.
constexpr std::chrono::seconds timeForClipboard{1};

Task<void> passOn(Task<QDBusConnection> connecting, std::function<void(QDBusConnection)> use)
{
    auto const bus = co_await std::move(connecting);
    use(bus);
}

/// The first application for folders is the one that the user has chosen.
Task<void> passOn(Task<std::vector<Application>> asking, QPointer<FileManagerService> service)
{
    auto const found = co_await std::move(asking);
    constexpr std::string_view own = "com.velmora.Tarnwick.desktop";
    if (service)
        service->setChosen(!found.empty() && found.front().isDefault && found.front().identifier == own);
}

Task<void> shutDown(ConnectionRegistry *connections, std::shared_ptr<std::binary_semaphore> done)
{
    // They end in some way, and that is all that is wanted now.
    co_await outcomeOf(connections->giveUpAttempts());
    co_await outcomeOf(connections->shutdownAll());
    done->release();
}

Task<ArchivePasswords::Password> askForPassword(std::shared_ptr<WindowLoginPrompter> prompter,
                                                ArchivePasswords::Question question)
{
    if (!prompter)
        co_return std::nullopt;
    LoginQuestion asked;
    asked.kind = LoginQuestion::Kind::archive;
    asked.host = std::move(question.archive);
    asked.prompt = "It is encrypted. Its password is kept in memory until Tarnwick ends.";
    asked.attempt = question.attempt;
    auto const answer = co_await prompter->ask(std::move(asked));
    co_return answer ? std::optional(std::string(answer->text.text())) : std::nullopt;
}

Task<std::shared_ptr<void const>> claimEdited(std::shared_ptr<ClaimedNames> claims, std::shared_ptr<Browser> host,
                                              std::string path)
{
    auto const slash = path.rfind('/');
    Operands const file{.browser = std::move(host),
                        .connection = {},
                        .path = path.substr(0, std::max<std::size_t>(slash, 1)),
                        .names = {path.substr(slash + 1)}};
    auto claim = co_await ClaimSteps::claim(std::move(claims), "write", file, ClaimedNames::Use::written);
    co_return claim;
}

} // namespace

AppDelegate::AppDelegate(Collaborators collaborators)
    : with(std::move(collaborators)),
      lifeLog({.mainContext = with.mainContext, .clock = with.engine.clock(), .file = with.lifeLog}),
      applications(std::make_shared<DesktopApplications>(with.engine)),
      edits(std::make_shared<EditSessions>(
          RemoteEditSession::Ports{.engine = with.engine,
                                   .mainContext = with.mainContext,
                                   .clock = with.engine.clock(),
                                   .host = [this](std::string host) { return with.connections.ssh(std::move(host)); },
                                   .claim =
                                       [claims = claims](std::shared_ptr<Browser> host, std::string path) {
                                           return claimEdited(claims, std::move(host), std::move(path));
                                       }},
          with.edits))
{
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching(PaneSpec::Sides const &sides,
                                                std::vector<OpenRequest::Place> const &besides)
{
    lifeLog.begin(with.version.empty() ? std::nullopt : std::optional(with.version));
    if (!with.settingsSetAside.empty())
        lifeLog.note("settings cannot be read whole; kept as " + with.settingsSetAside);
    removeScratch([](auto const &place) { Scratch::remove(place); });
    with.engine.directoryEvents().reportLimits([main = with.mainContext, self = QPointer(this)](std::string_view line) {
        main->post([self, text = std::string(line)] {
            if (self)
                self->lifeLog.note(text);
        });
    });
    QApplication::setStyle(new ProgramStyle(Settings::toolTipDelay.read(with.defaults)));
    // Quitting closes the windows as well, and is then not their doing.
    connect(qApp, &QGuiApplication::lastWindowClosed, this, [this] {
        if (!isAskedToQuit)
            applicationShouldTerminateAfterLastWindowClosed();
    });
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state != Qt::ApplicationActive || !controller)
            return;
        controller->checkForChanges();
        findOutWhetherChosen(); // the user may have chosen another file manager meanwhile
    });
    signals =
        std::make_unique<TerminationSignals>(with.engine.io(), with.mainContext, [this](int /*signal*/) { quit(); });

    auto const copies = std::make_shared<RemoteFiles>(with.engine, with.scratch);
    auto const passwords =
        std::make_shared<ArchivePasswords>([main = with.mainContext, logins = with.logins](auto question) {
            return onExecutor(main, askForPassword(logins, std::move(question)));
        });
    controller = std::make_unique<MainWindowController>(
        PaneController::Collaborators{with.mainContext, with.engine.clock(), with.defaults,
                                      with.engine.workers().executor(WorkPriority::interactive),
                                      ArchiveBrowsers{.engine = with.engine,
                                                      .sshProgram = TransferTools::find().ssh,
                                                      .copyOf = ArchiveBrowsers::copiesBy(with.mainContext, copies),
                                                      .passwords = passwords}},
        with.connections,
        std::make_shared<SessionMemory>(
            SessionMemory::Collaborators{with.mainContext, with.engine.clock(), with.defaults,
                                         [this](std::string_view line) { lifeLog.note(line); }}),
        WindowServices{
            .transfers = [&engine = with.engine,
                          tools = TransferTools::find()] { return std::make_shared<TransferEngine>(engine, tools); },
            .archives = [&engine = with.engine, tools = TransferTools::find(),
                         passwords] { return std::make_shared<ArchiveEngine>(engine, tools, passwords); },
            .dragFolders =
                [&engine = with.engine, place = with.scratch] {
                    return engine.workers().run(WorkPriority::interactive,
                                                [place] { return Scratch::newFolder("drag", place); });
                },
            .scratchFiles =
                [&engine = with.engine, place = with.scratch](std::string name, std::string bytes) {
                    return PastedFile::make(&engine, place, std::move(name), std::move(bytes));
                },
            .opening = {.applications = applications,
                        .copies = copies,
                        .edits = edits,
                        .terminalEditor =
                            [this] {
                                auto const isWanted = Settings::editor.read(with.defaults) == EditorChoice::terminal;
                                return isWanted ? TerminalEditor::ofThisUser() : std::string();
                            },
                        .activationToken = [this] { return startupToken.next(); }},
            .claims = claims});
    controller->usePreviews(std::make_shared<FilePreviews>(
        with.engine, [] { return Scratch::directory("preview"); },
        FilePreviews::Thumbnails{.folder = UserPaths::ofThisUser().thumbnails,
                                 .maker = std::make_shared<DesktopThumbnailer>(&ColorScheme::sessionBus)}));
    controller->useViewers(
        [&engine = with.engine](auto place, auto path) {
            return ViewedFile::at(engine, std::move(place), std::move(path));
        },
        PictureReading::decoder(with.engine));
    window = std::make_unique<MainWindow>(*controller, with.defaults, *this);
    jobWatch = std::make_unique<JobWatch>(window->works(), &ColorScheme::sessionBus);
    if (with.logins)
        with.logins->askOver(window->loginPrompter());
    colorScheme = std::make_unique<ColorScheme>(ColorScheme::sessionBus());
    colorScheme->start([this] {
        window->show();
        window->activateWindow();
        WelcomeWindow::showIfFirstRun(with.defaults, *window);
    });
    controller->start(sides);
    for (auto const &each : besides)
        controller->openInNewTab(each.place, each.side);
    fileManager = std::make_unique<FileManagerService>(ColorScheme::sessionBus(),
                                                       [this](OpenRequest const &request) { open(request); });
    findOutWhetherChosen();
    edits->resume();
    watchSession();
}

void AppDelegate::open(OpenRequest const &request)
{
    if (!window)
        return;
    for (auto const &each : request.places)
        controller->openInNewTab(each.place, each.side);
    // Where Qt looks for it when a window is activated.
    if (!request.activationToken.empty())
        qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(request.activationToken));
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
}

std::optional<CommandState> AppDelegate::stateOf(Command command) const
{
    auto const isOfTheProgram = command == Command::showAbout || command == Command::quit;
    return isOfTheProgram ? std::optional(CommandState{}) : std::nullopt;
}

void AppDelegate::perform(Command command)
{
    if (command == Command::showAbout)
        showAbout();
    else if (command == Command::quit && window)
        window->askToQuit([this] { quit(); });
}

void AppDelegate::quit()
{
    isAskedToQuit = true;
    if (!window)
        return QApplication::quit();
    window->letClose();
    if (auto *const strip = window->editStrip())
        strip->letClose();
    window->drag().endBefore([] { QApplication::quit(); });
}

void AppDelegate::findOutWhetherChosen() const
{
    spawn({with.mainContext, {}},
          passOn(applications->forType("inode/directory"), QPointer<FileManagerService>(fileManager.get())));
}

void AppDelegate::watchSession()
{
    spawn({with.mainContext, {}}, passOn(systemBus(&with.engine), [self = QPointer(this)](QDBusConnection const &bus) {
              if (!self)
                  return;
              self->session =
                  std::make_unique<SessionWatch>(bus, SessionWatch::sessionOfThisProcess(),
                                                 [self](SessionEvent event) { self->sessionChanged(event); });
              if (self->jobWatch)
                  self->jobWatch->setSystemBus(bus);
          }));
}

void AppDelegate::sessionChanged(SessionEvent event)
{
    lifeLog.note(event);
    if (event == SessionEvent::wake && controller)
        controller->revalidateAfterWake();
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
    QtClipboard::leaveToManager(timeForClipboard);
    signals.reset();
    fileManager.reset();
    session.reset();
    jobWatch.reset();
    colorScheme.reset();
    if (controller)
        controller->rememberAll();
    edits->leaveForNextStart();
    // The windows are gone from the screen before the wait. Later there would be none for what a display server still
    // has to say of them, and the toolkit does not expect that: another program's drag over one ended in a crash.
    QGuiApplication::sync();
    window.reset();
    controller.reset();
    with.defaults.flush();
    removeScratch([](auto const &place) { Scratch::remove(place.process, place); });
    awaitShutdown();
}

/// The shutdown needs the very thread that waits for it here, so it cannot begin before the wait is over: quitting
/// always takes the whole time, and the process then ends without it. That is kept as it is on purpose. What can hang
/// is on none of the program's last steps, so nothing that a host does makes quitting longer; the sessions end with
/// the process, as their input does; and the engine's threads have the time to write what they have begun to write.
void AppDelegate::awaitShutdown()
{
    auto const done = std::make_shared<std::binary_semaphore>(0);
    spawn({with.mainContext, {}}, shutDown(&with.connections, done));
    // The time-out is the usual outcome and needs no handling.
    with.waitForShutdown(*done, timeToEnd);
}

/// On a worker: the folder may lie on a mount that does not answer.
void AppDelegate::removeScratch(std::function<void(Scratch::Place const &)> removal) const
{
    with.engine.workers()
        .executor(WorkPriority::background)
        ->post([removal = std::move(removal), place = with.scratch] { removal(place); });
}

void AppDelegate::showAbout()
{
    if (!about) {
        about = new AboutDialog(QString::fromStdString(with.version), window.get());
        about->setAttribute(Qt::WA_DeleteOnClose);
    }
    about->show();
    about->raise();
    about->activateWindow();
}

} // namespace tw
