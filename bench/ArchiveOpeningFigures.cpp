// What it costs to enter an archive on a host at the end of a long line.

#include "TWEngine/Archives/ArchiveProvider.h"
#include "bench/FarHost.h"
#include "bench/Figure.h"

#include <cstdlib>
#include <stdexcept>

namespace tw::bench {
namespace {

using Milliseconds = std::chrono::milliseconds;

constexpr int members = 1000;
constexpr int runs = 7;
constexpr Milliseconds roundTrip{150};

/// Beside the round trip and what the host's own tar takes.
constexpr double openingOverhead = 20;

constexpr double folderLimit = 1;

void execute(std::string const &command)
{
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("failed: " + command);
}

std::string makeArchive(std::string const &folder)
{
    auto const archive = folder + "/archive.tar.gz";
    execute("cd '" + folder +
            "' && mkdir t && cd t && for d in $(seq 10); do mkdir \"folder $d\" && (cd \"folder $d\" && " +
            "for f in $(seq " + std::to_string(members / 10) +
            "); do echo $f >\"a file of a usual length $f.txt\"; done); "
            "done && tar -czf '" +
            archive + "' .");
    return archive;
}

double toolTime(std::string const &archive)
{
    std::vector<double> times;
    for (int run = 0; run < runs; ++run)
        times.push_back(
            millisecondsOf([&] { execute("tar --quoting-style=literal -tvf '" + archive + "' >/dev/null"); }));
    return median(std::move(times));
}

struct Times {
    double opening;
    double folder;
};

Times timesOf(FarHost &far, std::string const &archive)
{
    auto const host = far.provider();
    far.loop.run(host->connect());
    far.loop.run(host->runCommand({.text = ":", .session = CommandSession::work})); // the session for such work is up
    std::vector<double> opening;
    double slowestFolder = 0;
    for (int run = 0; run < runs; ++run) {
        auto const inside = std::make_shared<ArchiveProvider>(
            far.engine, ArchiveProvider::Archive{TransferEndpoint::remote(host, archive), "far"}, "ssh");
        Browser::Collaborators const with{
            .strand = far.engine.makeStrand(), .clock = far.engine.clock(), .store = nullptr};
        auto const browser = std::make_shared<Browser>(inside, with, Browser::Config());
        opening.push_back(millisecondsOf([&] {
            if (far.loop.run(browser->open("/")).snapshot.count() != 10)
                throw std::runtime_error("the listing is not whole");
        }));
        for (int folder = 1; folder <= 10; ++folder)
            slowestFolder = std::max(slowestFolder, millisecondsOf([&] {
                                         keep(far.loop.run(browser->open("/folder " + std::to_string(folder))));
                                     }));
        far.loop.run(browser->shutdown());
    }
    far.loop.run(host->disconnect());
    return {median(std::move(opening)), slowestFolder};
}

void reportAll(Figures &figures)
{
    test::TemporaryFolder const folder;
    auto const archive = makeArchive(folder.path());
    FarHost far(roundTrip);
    auto const times = timesOf(far, archive);
    figures.report("opening an archive of 1,000 members 150 ms away", times.opening, Figures::Yardstick::limit,
                   static_cast<double>(roundTrip.count()) + toolTime(archive) + openingOverhead, "ms", 1.0);
    figures.report("a folder in it, the slowest of 70", times.folder, Figures::Yardstick::limit, folderLimit, "ms",
                   1.0);
}

} // namespace
} // namespace tw::bench

int main()
{
    tw::bench::Figures figures;
    tw::bench::reportAll(figures);
    return figures.exitCode();
}
