// The program once ssh does not ask it for a password: is it asked for its version, or for a window?

#include "Tarnwick/App/WindowProgram.h"

#include "TWEngine/Instance/InstanceCall.h"
#include "TWEngine/Instance/InstanceDesk.h"
#include "TWEngine/Instance/InstanceSocket.h"
#include "TWEngine/Passwords/AskpassDesk.h"
#include "TWEngine/Platform/HomeFolder.h"
#include "TWEngine/Platform/UserPaths.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/ProcessEnd.h"
#include "Tarnwick/Connections/ConnectionRegistry.h"
#include "Tarnwick/Instance/OpenRequest.h"
#include "Tarnwick/Toolkit/Program/AppDelegate.h"
#include "Tarnwick/Toolkit/Program/HeldKeys.h"
#include "Tarnwick/Toolkit/Program/QtDefaults.h"
#include "Tarnwick/Toolkit/Program/QtMainContext.h"
#include "Tarnwick/Toolkit/Program/SilentBusGuard.h"
#include "Tarnwick/Toolkit/Program/WindowLoginPrompter.h"

#include <QApplication>
#include <QIcon>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

#include <unistd.h>

namespace {

using namespace tw;

constexpr auto helpText = "Usage: tarnwick [OPTION]... [PLACE]...\n"
                          "A file manager with two panes.\n"
                          "\n"
                          "  --left PLACE    open PLACE in the left pane\n"
                          "  --right PLACE   open PLACE in the right pane\n"
                          "  --new-instance  open a window of its own\n"
                          "  --help          show this text and leave\n"
                          "  --version       show the version and leave\n"
                          "\n"
                          "PLACE is an absolute path, or HOST:PATH for a folder of a host that ssh can reach.\n"
                          "Without one a side opens what was open last time.\n"
                          "If a window is open already, it opens each PLACE in a new tab.\n";

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

using Arguments = std::span<char const *const>;

/// What this start asks for.
OpenRequest requestOf(Arguments arguments)
{
    std::error_code unknown;
    auto request = OpenRequest::from(arguments, std::filesystem::current_path(unknown).native());
    // Of Wayland, or of the older protocol.
    for (auto const *variable : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}) {
        auto const *const token = std::getenv(variable);
        if (token && request.activationToken.empty())
            request.activationToken = token;
    }
    return request;
}

/// Where later starts on this display call. Null if another program, which does not answer, is called there. Ends the
/// process if another start was quicker.
std::unique_ptr<LocalListener> listenerAt(std::string const &socket, EngineRuntime &runtime, Arguments arguments)
{
    auto listener = LocalListener::create(runtime.io(), socket);
    if (listener || wantsOwnProcess(arguments))
        return listener;
    auto const called = InstanceCall::make(socket, requestOf(arguments).encoded());
    if (called == InstanceCall::Outcome::agreed)
        endProcess(EXIT_SUCCESS);
    if (called == InstanceCall::Outcome::nobody) {
        ::unlink(socket.c_str()); // left by a program that was killed
        listener = LocalListener::create(runtime.io(), socket);
    }
    return listener;
}

std::function<std::function<void()>(std::string_view)> openerOf(AppDelegate &delegate)
{
    return [&delegate](std::string_view message) -> std::function<void()> {
        auto request = OpenRequest::decoded(message);
        if (!request)
            return nullptr;
        return [&delegate, wanted = *std::move(request)] { delegate.open(wanted); };
    };
}

[[noreturn]] void run(Arguments arguments, std::optional<std::string> const &socket)
{
    EngineRuntime runtime;
    auto listener = socket ? listenerAt(*socket, runtime, arguments) : nullptr;
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
                          .version = TARNWICK_VERSION,
                          .settingsSetAside = defaults.setAside()});
    std::optional<InstanceDesk> desk;
    if (listener)
        desk.emplace(InstanceDesk::Collaborators{.io = runtime.io(),
                                                 .executor = mainContext.context(),
                                                 .clock = runtime.clock(),
                                                 .listener = std::move(listener),
                                                 .understand = openerOf(delegate)});
    auto besides = requestOf(arguments).places;
    std::erase_if(besides, [](auto const &each) { return each.side.has_value(); });
    delegate.applicationDidFinishLaunching(PaneSpec::fromCommandLine(arguments), besides);
    auto const status = QApplication::exec();
    desk.reset();
    delegate.applicationWillTerminate();
    runtime.io().childSessions().kill();
    logins->endAll();
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
    Arguments const arguments(argv + 1, argv + argc);
    auto const socket = InstanceSocket::pathFor(inheritedEnvironment(), ::getuid());
    // Before a toolkit is made: the window that is there comes to the front at once.
    if (socket && !wantsOwnProcess(arguments) &&
        InstanceCall::make(*socket, requestOf(arguments).encoded()) == InstanceCall::Outcome::agreed)
        return EXIT_SUCCESS;
    QApplication::setApplicationName(QStringLiteral("tarnwick"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tarnwick"));
    QApplication::setApplicationVersion(QStringLiteral(TARNWICK_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.velmora.Tarnwick"));
    std::optional<SilentBusGuard> guard(std::in_place);
    QApplication application(argc, argv); // takes Qt's own options out of the arguments
    guard.reset();
    HeldKeys const heldKeys(application);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/tarnwick.svg")));
    run({argv + 1, argv + argc}, socket);
}
