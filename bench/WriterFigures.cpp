// What it costs to move and delete 10,000 names: on a host 50 ms away, and into the Trash of this machine.

#include "TWCore/Shell/FileCommands.h"
#include "TWCore/Shell/MoveCommand.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/SSHProvider.h"
#include "bench/BenchLoop.h"
#include "bench/Figure.h"
#include "tests/hosts/DelayProxy.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/TestHost.h"
#include "tests/support/TemporaryFolder.h"

#include <stdexcept>

#include <unistd.h>

namespace tw::bench {
namespace {

using test::TemporaryFolder;
using Moves = std::vector<FileSystemWriter::Move>;
using Paths = std::vector<std::string>;
using enum Figures::Yardstick;

constexpr int runs = 5;
constexpr int names = 10'000;
constexpr std::chrono::milliseconds roundTrip{50};

/// The work session sends thousands of names over a line whose window is still small.
constexpr double mostRoundTripsOfAMove = 5;

/// Beside one round trip and the time of the same command in a shell of this machine.
constexpr double largestDeleteRatio = 1.1;

/// The same names again and again.
std::string nameOf(int number)
{
    return "a name of a common length " + std::to_string(number);
}

Paths fill(TemporaryFolder const &folder, std::string const &below)
{
    folder.folder(below);
    Paths paths;
    for (int number = 0; number < names; ++number)
        paths.push_back(folder.file(below + '/' + nameOf(number)));
    return paths;
}

void runOrFail(std::string const &command)
{
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("failed: " + command);
}

/// Runs a request to a host in a shell of this machine, which reads it from a pipe as there, in milliseconds: the
/// host's own time.
double shellTime(std::string const &request)
{
    TemporaryFolder const folder;
    auto const script = folder.file("script", "( eval " + quote(ShellDialect::posix, request) + " )\n");
    return millisecondsOf([&] { runOrFail("cat '" + script + "' | bash -s >/dev/null"); });
}

/// The host and the line to it.
class FarHost {
public:
    FarHost()
    {
        client.add("far", host.address().through(line.port()));
        loop.run(provider->connect());
        // The session that changes things comes up before the figures.
        loop.run(provider->runCommand({.text = "true", .session = CommandSession::work}));
    }

    ~FarHost() { loop.run(provider->disconnect()); }

    FarHost(FarHost const &) = delete;
    FarHost &operator=(FarHost const &) = delete;

    EngineRuntime engine;
    BenchLoop loop;
    test::TestHost host{engine};
    test::DelayProxy line{host.address().port, roundTrip};
    test::SSHClient client;
    TemporaryFolder sockets;
    std::shared_ptr<SSHProvider> provider = std::make_shared<SSHProvider>(
        SSHProvider::Collaborators{
            .engine = engine, .sshProgram = client.program(), .sockets = {.base = sockets.path(), .user = ::getuid()}},
        "far");
};

Moves movesBetween(TemporaryFolder const &folder, std::string const &from, std::string const &to)
{
    Moves moves;
    for (int number = 0; number < names; ++number)
        moves.push_back({folder.path(from + '/' + nameOf(number)), folder.path(to + '/' + nameOf(number))});
    return moves;
}

void measureMove(Figures &figures, FarHost &far)
{
    TemporaryFolder const folder;
    fill(folder, "from");
    folder.folder("to");
    auto const there = movesBetween(folder, "from", "to");
    auto const back = movesBetween(folder, "to", "from");
    auto const medians = takeTurns(
        runs, [&] { return millisecondsOf([&] { far.loop.run(far.provider->moveAll(there)); }); },
        [&] { return shellTime(MoveCommand::text(ShellDialect::posix, back)); });
    auto const roundTrips = (medians.subject - medians.peer) / static_cast<double>(roundTrip.count());
    figures.report("move of 10,000 names on a host, beside the host's own time", roundTrips, limit,
                   mostRoundTripsOfAMove, "round trips", 1.0);
}

void measureDelete(Figures &figures, FarHost &far)
{
    TemporaryFolder const folder;
    Paths paths;
    auto const medians = takeTurns(
        runs,
        [&] {
            paths = fill(folder, "deleted");
            return millisecondsOf([&] { far.loop.run(far.provider->remove(paths)); });
        },
        [&] {
            fill(folder, "deleted");
            return static_cast<double>(roundTrip.count()) + shellTime(FileCommands::remove(ShellDialect::posix, paths));
        });
    figures.report("delete of 10,000 names on a host, beside a round trip and the host's own time", medians.subject,
                   peer, medians.peer, "ms", largestDeleteRatio);
}

/// For comparison only: both wait for the same journal of the disk.
void showTrash()
{
    EngineRuntime engine;
    BenchLoop loop;
    LocalProvider provider(engine);
    TemporaryFolder const folder;
    auto const byHand = "find '" + folder.path() + "/thrown' -type f -print0 | xargs -0 gio trash";
    auto const medians = takeTurns(
        runs,
        [&] {
            auto const paths = fill(folder, "thrown");
            return millisecondsOf([&] { loop.run(provider.remove(paths)); });
        },
        [&] {
            fill(folder, "thrown");
            return millisecondsOf([&] { runOrFail(byHand); });
        });
    std::printf("10,000 files to the Trash: %.3f ms, gio trash %.3f ms\n", medians.subject, medians.peer);
}

int measureAll()
{
    // The Trash of these runs, on the file system of their files. Before GLib looks for the user's.
    TemporaryFolder const data;
    ::setenv("XDG_DATA_HOME", data.path().c_str(), 1);
    Figures figures;
    {
        FarHost far;
        measureMove(figures, far);
        measureDelete(figures, far);
    }
    showTrash();
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::measureAll();
}
