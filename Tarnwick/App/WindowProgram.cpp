// The program once ssh does not ask it for a password: is it asked for its version, or for a window?

#include "Tarnwick/App/WindowProgram.h"

#include "TWEngine/Passwords/AskpassDesk.h"
#include "TWEngine/Platform/HomeFolder.h"
#include "TWEngine/Platform/UserPaths.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/ProcessEnd.h"
#include "Tarnwick/Connections/ConnectionRegistry.h"
#include "Tarnwick/Toolkit/Program/AppDelegate.h"
#include "Tarnwick/Toolkit/Program/HeldKeys.h"
#include "Tarnwick/Toolkit/Program/QtDefaults.h"
#include "Tarnwick/Toolkit/Program/QtMainContext.h"
#include "Tarnwick/Toolkit/Program/SilentBusGuard.h"
#include "Tarnwick/Toolkit/Program/WindowLoginPrompter.h"

#include <QApplication>
#include <QIcon>

#include <chrono>
#include <cstdio>
#include <optional>
#include <span>
#include <string_view>

namespace {

using namespace tw;

constexpr auto helpText = "Usage: tarnwick [OPTION]...\n"
                          "A file manager with two panes.\n"
                          "\n"
                          "  --left PLACE    open PLACE in the left pane\n"
                          "  --right PLACE   open PLACE in the right pane\n"
                          "  --help          show this text and leave\n"
                          "  --version       show the version and leave\n"
                          "\n"
                          "PLACE is an absolute path, or HOST:PATH for a folder of a host that ssh can reach.\n"
                          "Without one a pane opens the home directory.\n";

/// What is asked for and needs no window, or null.
char const *textAskedFor(std::span<char const *const> arguments)
{
    for (std::string_view const argument : arguments) {
        if (argument == "--help" || argument == "-h")
            return helpText;
        if (argument == "--version")
            return "Tarnwick " TARNWICK_VERSION "\n";
    }
    return nullptr;
}

[[noreturn]] void run(std::span<char const *const> arguments)
{
    EngineRuntime runtime;
    // A database that answers at all mostly does so in less.
    HomeFolder::ensureInEnvironment(runtime.workers(), std::chrono::milliseconds(50));
    QtMainContext mainContext;
    QtDefaults defaults;
    auto const paths = UserPaths::ofThisUser();
    auto const prompter = std::make_shared<WindowLoginPrompter>();
    auto const logins =
        std::make_shared<AskpassDesk>(AskpassDesk::Collaborators{.engine = runtime,
                                                                 .mainContext = mainContext.context(),
                                                                 .prompter = prompter,
                                                                 .helper = SavedPasswords::ownExecutable(),
                                                                 .folder = [] { return ControlPath::runtimeFolder(); },
                                                                 .keyStore = LoginKeyStore::ofThisSession()});
    ConnectionRegistry connections({.engine = runtime,
                                    .mainContext = mainContext.context(),
                                    .savedPasswords = SavedPasswords::ofThisSession(runtime),
                                    .logins = logins,
                                    .cacheDirectory = paths.caches});
    AppDelegate delegate({.engine = runtime,
                          .mainContext = mainContext.context(),
                          .defaults = defaults,
                          .connections = connections,
                          .logins = prompter,
                          .lifeLog = paths.lifeLog,
                          .version = TARNWICK_VERSION});
    delegate.applicationDidFinishLaunching(PaneSpec::fromCommandLine(arguments));
    auto const status = QApplication::exec();
    logins->endAll();
    delegate.applicationWillTerminate();
    runtime.io().childSessions().kill();
    // As it is: to destroy the engine is to wait for its threads, and a call on a dead network mount does not return.
    endProcess(status);
}

} // namespace

int tarnwickWindowProgram(int argc, char **argv)
{
    if (auto const *const text = textAskedFor({argv + 1, argv + argc})) {
        std::fputs(text, stdout);
        return 0;
    }
    QApplication::setApplicationName(QStringLiteral("tarnwick"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tarnwick"));
    QApplication::setApplicationVersion(QStringLiteral(TARNWICK_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.velmora.Tarnwick"));
    std::optional<SilentBusGuard> guard(std::in_place);
    QApplication application(argc, argv); // takes Qt's own options out of the arguments
    guard.reset();
    HeldKeys const heldKeys(application);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/tarnwick.svg")));
    run({argv + 1, argv + argc});
}
