// How long the program takes from its start to the first listing on screen, and how much of that is ours: beside it a
// program is started that shows a bare window. Needs a display.

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "bench/BenchLoop.h"
#include "bench/Figure.h"
#include "bench/ManyFiles.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace tw::bench {
namespace {

constexpr double limitMilliseconds = 300.0;

/// Reads what the child prints until `word` is in it. Answers whether it came before the end.
Task<bool> awaitWord(std::shared_ptr<ChildProcess> child, std::string word)
{
    std::string printed;
    for (;;) {
        auto const piece = co_await child->read(ChildOutput::error);
        if (piece.empty())
            co_return false;
        printed += piece;
        if (printed.contains(word))
            co_return true;
    }
}

/// Milliseconds from before the start of `command` until it has printed `word`.
double startUntil(EngineRuntime &runtime, BenchLoop &loop, ChildCommand const &command, std::string const &word)
{
    std::shared_ptr<ChildProcess> child;
    auto const elapsed = millisecondsOf([&] {
        child = ChildProcess::start(runtime.io(), command).value();
        if (!loop.run(awaitWord(child, word)))
            throw std::runtime_error(command.program + " ended before it had painted");
    });
    child->kill();
    loop.run(child->wait());
    return elapsed;
}

/// The settings of somebody who had these tabs open on the left, of which the first one shows.
std::string settingsWith(std::string const &tabs, std::string const &right)
{
    auto json = R"([{"tabs":[)" + tabs + R"(],"active":0},{"tabs":[)" + right + R"(],"active":0}])";
    std::string escaped;
    for (auto const character : json)
        escaped += character == '"' ? std::string("\\\"") : std::string(1, character);
    return "[General]\ntw.welcomeShown=true\ntw.sides=\"" + escaped + "\"\n";
}

std::string tabOn(std::string const &connection, std::string const &path)
{
    return R"({"connection":")" + connection + R"(","path":")" + path + R"("})";
}

/// Twenty tabs on ten hosts, of which nobody answers, and a local one that shows. What stands before the window is the
/// same for a host that is dead and one that is not: nothing of a tab that does not show may be asked.
std::string manyTabs(std::string const &shown)
{
    auto tabs = tabOn("local", shown);
    for (int tab = 0; tab < 20; ++tab)
        tabs += "," + tabOn("host" + std::to_string(tab % 10) + ".invalid", "/srv/" + std::to_string(tab));
    return tabs;
}

/// Milliseconds until the window is there, with these settings.
double startWith(EngineRuntime &runtime, BenchLoop &loop, ChildCommand const &command, std::string const &settings)
{
    std::ofstream(command.environment->at("XDG_CONFIG_HOME") + "/Tarnwick/Tarnwick.ini") << settings;
    return startUntil(runtime, loop, command, "window shown");
}

/// A tab that is remembered costs the start next to nothing.
void measureRememberedTabs(Figures &figures, EngineRuntime &runtime, BenchLoop &loop, ChildCommand command)
{
    constexpr double allowedMilliseconds = 20;
    auto const home = command.environment->at("HOME");
    auto const local = tabOn("local", home);
    command.arguments = {};
    auto const times = takeTurns(
        11, [&] { return startWith(runtime, loop, command, settingsWith(manyTabs(home), local)); },
        [&] { return startWith(runtime, loop, command, settingsWith(local, local)); });
    figures.report("start to the window with 20 remembered tabs on hosts, beyond two local tabs",
                   times.subject - times.peer, Figures::Yardstick::limit, allowedMilliseconds, "ms", 1.0);
}

int run()
{
    ManyFiles const home(100);
    EngineRuntime runtime;
    BenchLoop loop;
    auto environment = inheritedEnvironment();
    environment["QT_LOGGING_RULES"] = "tarnwick.start.debug=true";
    environment["HOME"] = environment["XDG_CONFIG_HOME"] = home.path();
    // Nobody is welcomed here.
    std::filesystem::create_directory(home.path() + "/Tarnwick");
    std::ofstream(home.path() + "/Tarnwick/Tarnwick.ini") << "[General]\ntw.welcomeShown=true\n";
    ChildCommand const ours{.program = TARNWICK_PROGRAM,
                            .arguments = {"--left", home.path(), "--right", "/etc"},
                            .environment = environment,
                            .error = PipeEnd{}};
    ChildCommand const bare{.program = TARNWICK_BARE_WINDOW, .environment = environment, .error = PipeEnd{}};

    auto const times = takeTurns(
        11, [&] { return startUntil(runtime, loop, ours, "listing painted " + home.path()); },
        [&] { return startUntil(runtime, loop, bare, "painted\n"); });
    Figures figures;
    figures.report("program start to the first listing on screen", times.subject, Figures::Yardstick::limit,
                   limitMilliseconds, "ms", 1.0);
    std::printf("program start, a bare window takes %.1f ms, so that %.1f ms are ours\n", times.peer,
                times.subject - times.peer);
    measureRememberedTabs(figures, runtime, loop, ours);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::run();
}
