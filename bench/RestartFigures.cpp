// How long it takes at a start, once the window is up, until the folder of a host that was seen last time is on screen
// again, while the host itself is still far from being reached; and how long the program takes to be gone when its host
// is dead. Needs a display.

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "bench/BenchLoop.h"
#include "bench/Figure.h"
#include "tests/hosts/DelayProxy.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/SSHHome.h"
#include "tests/hosts/TestHost.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace tw::bench {
namespace {

constexpr std::chrono::milliseconds roundTrip{150};
constexpr double limitMilliseconds = 50;
constexpr int runs = 7;

/// The two seconds that the program always takes, and what the system takes to end it then.
constexpr double limitToQuit = 2050;

/// What the child prints until `word` is in it.
Task<std::string> printedUntil(std::shared_ptr<ChildProcess> child, std::string word)
{
    std::string printed;
    while (!printed.contains(word)) {
        auto const piece = co_await child->read(ChildOutput::error);
        if (piece.empty())
            throw std::runtime_error("the program ended before it had painted: " + printed);
        printed += piece;
    }
    co_return printed;
}

/// The microseconds at which it says that `event` happened.
double timeOf(std::string const &event, std::string const &printed)
{
    auto const end = printed.find(' ' + event);
    auto const start = printed.rfind(' ', end - 1);
    return std::stod(printed.substr(start, end - start));
}

class Machine {
public:
    Machine()
    {
        home.folder(".config/Tarnwick");
        home.file(".config/Tarnwick/Tarnwick.ini", "[General]\ntw.welcomeShown=true\n");
        for (int file = 0; file < 1000; ++file)
            remote.file("file " + std::to_string(file));
        client.add(alias, host.address().through(line.port()));
        command.environment = inheritedEnvironment();
        for (auto const *variable : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
            command.environment->erase(variable);
        (*command.environment)["HOME"] = home.path();
        (*command.environment)["QT_LOGGING_RULES"] = "tarnwick.start.debug=true";
        (*command.environment)["DBUS_SESSION_BUS_ADDRESS"] = "disabled:";
        for (auto const &[name, value] : test::sshHome(home, client.home()))
            command.environment->insert_or_assign(name, value);
    }

    /// One life of the program: milliseconds from its window to the folder of the host.
    double live()
    {
        auto const child = ChildProcess::start(engine.io(), command).value();
        auto const printed = loop.run(printedUntil(child, "listing painted " + remote.path()));
        child->terminate();
        loop.run(child->wait());
        return (timeOf("listing painted " + remote.path(), printed) - timeOf("window shown", printed)) / 1000;
    }

    /// Milliseconds from the wish that the program ends to its end, with a host that does not answer any more.
    double quitWithADeadHost()
    {
        auto const child = ChildProcess::start(engine.io(), command).value();
        loop.run(printedUntil(child, "listing painted " + remote.path()));
        line.stall();
        auto const time = millisecondsOf([&] {
            child->terminate();
            loop.run(child->wait());
        });
        line.cut();
        line.resume();
        return time;
    }

private:
    std::string const alias = "tarnwick-bench-" + std::to_string(::getpid());
    EngineRuntime engine;
    BenchLoop loop;
    test::TemporaryFolder home;
    test::TemporaryFolder remote;
    test::TestHost host{engine};
    test::DelayProxy line{host.address().port, roundTrip};
    test::SSHClient client;
    ChildCommand command{.program = TARNWICK_PROGRAM,
                         .arguments = {"--left", home.path(), "--right", alias + ":" + remote.path()},
                         .environment = {},
                         .error = PipeEnd{}};
};

int run()
{
    Machine machine;
    auto const first = machine.live();
    std::vector<double> restarts;
    for (int run = 0; run < runs; ++run)
        restarts.push_back(machine.live());
    std::printf("first start, the folder of a host that is 150 ms away after %.1f ms\n", first);
    Figures figures;
    figures.report("restart, from the window to the remembered folder of a host that is 150 ms away",
                   median(std::move(restarts)), Figures::Yardstick::limit, limitMilliseconds, "ms", 1.0);
    figures.report("quitting with a host that does not answer", machine.quitWithADeadHost(), Figures::Yardstick::limit,
                   limitToQuit, "ms", 1.0);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::run();
}
