// What the program uses while nobody does anything: a window with the folder of a host in each pane, both of which it
// asks for changes. For a minute, on a real display with a real sshd.

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
#include <sstream>
#include <stdexcept>
#include <thread>

#include <unistd.h>

namespace tw::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds measured{60};
/// A start has things to do afterwards, too.
constexpr std::chrono::seconds settling{10};
constexpr double mostProcessor = 0.002;
constexpr double mostWakeUps = 2;

/// What the kernel has counted of a process so far.
struct Use {
    double processorSeconds = 0;
    double mainWakeUps = 0; ///< of the thread that has the window
    double allWakeUps = 0;
};

/// The number behind `key` in a file of lines.
double numberIn(fs::path const &file, std::string const &key)
{
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(key))
            return std::stod(line.substr(key.size()));
    }
    throw std::runtime_error("no " + key + " in " + file.native());
}

Use useOf(pid_t process)
{
    auto const folder = "/proc/" + std::to_string(process);
    Use use;
    std::ifstream stat(folder + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), {});
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string skipped;
    for (int field = 3; field < 14; ++field)
        fields >> skipped;
    double user = 0;
    double system = 0;
    fields >> user >> system;
    use.processorSeconds = (user + system) / double(::sysconf(_SC_CLK_TCK));
    for (auto const &thread : fs::directory_iterator(folder + "/task")) {
        auto const wakeUps = numberIn(thread.path() / "status", "voluntary_ctxt_switches:");
        use.allWakeUps += wakeUps;
        if (thread.path().filename() == std::to_string(process))
            use.mainWakeUps = wakeUps;
    }
    return use;
}

Task<void> printedUntil(std::shared_ptr<ChildProcess> child, std::string word, std::string again)
{
    std::string printed;
    while (!printed.contains(word) || !printed.contains(again)) {
        auto const piece = co_await child->read(ChildOutput::error);
        if (piece.empty())
            throw std::runtime_error("the program ended before it had painted: " + printed);
        printed += piece;
    }
}

int run()
{
    EngineRuntime engine;
    BenchLoop loop;
    test::TemporaryFolder const home;
    test::TemporaryFolder const left;
    test::TemporaryFolder const right;
    test::TestHost host(engine);
    test::DelayProxy line(host.address().port, std::chrono::milliseconds(0));
    test::SSHClient client;
    auto const alias = "tarnwick-bench-" + std::to_string(::getpid());
    client.add(alias, host.address().through(line.port()));
    for (auto const *folder : {&left, &right}) {
        for (int file = 0; file < 100; ++file)
            folder->file("file " + std::to_string(file));
    }
    home.folder(".config/Tarnwick");
    home.file(".config/Tarnwick/Tarnwick.ini", "[General]\ntw.welcomeShown=true\n");
    ChildCommand command{.program = TARNWICK_PROGRAM,
                         .arguments = {"--left", alias + ":" + left.path(), "--right", alias + ":" + right.path()},
                         .environment = inheritedEnvironment(),
                         .error = PipeEnd{}};
    for (auto const *variable : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
        command.environment->erase(variable);
    (*command.environment)["HOME"] = home.path();
    (*command.environment)["QT_LOGGING_RULES"] = "tarnwick.start.debug=true";
    (*command.environment)["DBUS_SESSION_BUS_ADDRESS"] = "disabled:";
    for (auto const &[name, value] : test::sshHome(home, client.home()))
        command.environment->insert_or_assign(name, value);

    auto const child = ChildProcess::start(engine.io(), command).value();
    loop.run(printedUntil(child, "listing painted " + left.path(), "listing painted " + right.path()));
    std::this_thread::sleep_for(settling);
    auto const sentBefore = line.traffic().towardsHost.received;
    auto const before = useOf(child->processId());
    std::this_thread::sleep_for(measured);
    auto const after = useOf(child->processId());
    auto const sent = line.traffic().towardsHost.received - sentBefore;
    child->terminate();
    loop.run(child->wait());
    if (sent == 0)
        throw std::runtime_error("the hosts were not asked; does the window have the keyboard?");

    auto const seconds = double(measured.count());
    std::printf("idle with two folders of a host: %.0f bytes a second over the line, %.2f wake-ups a second of all "
                "threads together\n",
                double(sent) / seconds, (after.allWakeUps - before.allWakeUps) / seconds);
    Figures figures;
    figures.report("idle with two folders of a host, share of a core",
                   (after.processorSeconds - before.processorSeconds) / seconds, Figures::Yardstick::limit,
                   mostProcessor, "cores", 1.0);
    figures.report("idle with two folders of a host, wake-ups of the window's thread",
                   (after.mainWakeUps - before.mainWakeUps) / seconds, Figures::Yardstick::limit, mostWakeUps,
                   "a second", 1.0);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::run();
}
