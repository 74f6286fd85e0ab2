// What a host at the end of a long line costs a person who waits: a real sshd, the ssh client, and a line that delays.

#include "bench/FarHost.h"
#include "bench/Figure.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <unistd.h>

namespace tw::bench {
namespace {

using test::TemporaryFolder;
using Milliseconds = std::chrono::milliseconds;

constexpr int manyFiles = 1000;
constexpr int subfolders = 10;
constexpr int runs = 5;

/// Beside the round trip and the host's own `find`: our side of a listing of a thousand files.
constexpr double listingOverhead = 10;
/// To enter a folder that was scanned ahead.
constexpr double enteringLimit = 5;
/// A client that is started and asks for nothing is what everybody pays. Beside it: one round trip until the host takes
/// the script, one for the listing, and the host's own work on both.
constexpr double firstListingRoundTrips = 2;
constexpr double firstListingOverhead = 30;

/// What lies on the host.
class Tree {
public:
    Tree()
    {
        std::filesystem::create_directory(folder.path("many"));
        for (int index = 0; index < manyFiles; ++index)
            std::ofstream(many() + "/a file of a usual length " + std::to_string(index) + ".txt") << index;
        for (int index = 0; index < subfolders; ++index) {
            std::filesystem::create_directories(subfolder(index));
            for (int file = 0; file < 30; ++file)
                std::ofstream(subfolder(index) + "/file " + std::to_string(file)) << file;
        }
    }

    std::string many() const { return folder.path("many"); }

    std::string top() const { return folder.path("top"); }

    std::string subfolder(int index) const { return top() + "/folder " + std::to_string(index); }

private:
    TemporaryFolder folder;
};

/// A far host with that tree on it.
class FarHostWithTree : public FarHost {
public:
    FarHostWithTree() : FarHost(Milliseconds(0)) {}

    Tree const tree;
};

/// Runs a shell command to its end, in milliseconds.
double commandTime(std::string const &command)
{
    return millisecondsOf([&] {
        if (std::system(command.c_str()) != 0)
            throw std::runtime_error("failed: " + command);
    });
}

double medianOf(int count, auto const &measure)
{
    std::vector<double> values;
    for (int run = 0; run < count; ++run)
        values.push_back(measure());
    return median(std::move(values));
}

/// What the host itself takes to find the files of a folder.
double findTime(FarHostWithTree &far)
{
    return medianOf(runs, [&] {
        return commandTime("find -H '" + far.tree.many() +
                           "' -maxdepth 1 -mindepth 1 -printf '%y\\t%s\\t%T@\\t%m\\t%P\\0' >/dev/null");
    });
}

/// What a client takes that is started, logs in and asks for nothing.
double bareClientTime(FarHostWithTree &far)
{
    return medianOf(runs, [&] { return commandTime(far.client.program() + " far true </dev/null"); });
}

double firstListingTime(FarHostWithTree &far)
{
    return medianOf(runs, [&] {
        auto const provider = far.provider();
        auto const time = millisecondsOf([&] {
            far.loop.run(provider->connect());
            keep(far.loop.run(provider->fetch(far.tree.many(), 1, FetchPriority::interactive)).size());
        });
        far.loop.run(provider->disconnect());
        return time;
    });
}

double listingTime(FarHostWithTree &far)
{
    auto const provider = far.provider();
    far.loop.run(provider->connect());
    auto const time = medianOf(2 * runs, [&] {
        return millisecondsOf([&] {
            auto const listings = far.loop.run(provider->fetch(far.tree.many(), 1, FetchPriority::interactive));
            if (listings.at(far.tree.many()).count() != manyFiles)
                throw std::runtime_error("the listing is not whole");
        });
    });
    far.loop.run(provider->disconnect());
    return time;
}

/// The slowest of ten folders, entered one after the other once the first listing is there.
double enteringTime(FarHostWithTree &far)
{
    auto const browser = far.browser(far.provider());
    far.loop.run(browser->connect());
    keep(far.loop.run(browser->open(far.tree.top())).snapshot.count());
    while (!far.loop.run(browser->cached(far.tree.subfolder(subfolders - 1))))
        far.loop.run(far.engine.clock()->sleep(Milliseconds(1)));
    double slowest = 0;
    for (int index = 0; index < subfolders; ++index) {
        slowest = std::max(slowest, millisecondsOf([&] {
                               auto const opened = far.loop.run(browser->open(far.tree.subfolder(index)));
                               if (opened.wasCold || opened.snapshot.count() == 0)
                                   throw std::runtime_error("a folder was not scanned ahead");
                           }));
    }
    far.loop.run(browser->shutdown());
    return slowest;
}

/// How many connections it takes to open a folder again after the line was cut. Throws what the user would see.
double reopeningConnections(FarHostWithTree &far)
{
    auto const provider = far.provider();
    auto const browser = far.browser(provider);
    far.loop.run(browser->connect());
    keep(far.loop.run(browser->open(far.tree.many())).snapshot.count());
    far.loop.run(provider->runCommand({.text = "true", .session = CommandSession::background})); // both sessions are up
    auto const before = far.line.traffic().connections;
    far.line.cut();
    far.loop.run(browser->invalidateAll());
    if (far.loop.run(browser->open(far.tree.many())).snapshot.count() != manyFiles)
        throw std::runtime_error("the listing is not whole");
    auto const made = far.line.traffic().connections - before;
    far.loop.run(browser->shutdown());
    return static_cast<double>(made);
}

bool hasMounts()
{
    return std::system("command -v sshfs >/dev/null && command -v fusermount3 >/dev/null") == 0 &&
           ::access("/dev/fuse", R_OK | W_OK) == 0;
}

/// The same listing through a mounted folder that has not been looked at yet.
double mountedListingTime(FarHostWithTree &far)
{
    TemporaryFolder const mount;
    return medianOf(3, [&] {
        commandTime("sshfs -o ssh_command=" + far.client.program() + " 'far:" + far.tree.many() + "' '" + mount.path() +
                    "'");
        auto const time = commandTime("ls -la '" + mount.path() + "' >/dev/null");
        commandTime("fusermount3 -u '" + mount.path() + "'");
        return time;
    });
}

void measureAt(FarHostWithTree &far, Figures &figures, Milliseconds roundTrip, double &firstListingAtOnce)
{
    far.line.setRoundTrip(roundTrip);
    auto const distance = static_cast<double>(roundTrip.count());
    auto const at = std::to_string(roundTrip.count()) + " ms away, ";
    using enum Figures::Yardstick;

    auto const listing = listingTime(far);
    figures.report(at + "listing of 1,000 files on a connected host", listing, limit,
                   distance + findTime(far) + listingOverhead, "ms", 1.0);
    auto const first = firstListingTime(far);
    figures.report(at + "first listing from nothing, beside a bare client, two round trips and 30 ms", first, limit,
                   bareClientTime(far) + firstListingRoundTrips * distance + firstListingOverhead, "ms", 1.0);
    if (distance == 0)
        firstListingAtOnce = first;
    else
        std::printf("%sfirst listing from nothing: %.1f round trips\n", at.c_str(),
                    (first - firstListingAtOnce) / distance);
    figures.report(at + "the slowest of ten subfolders entered", enteringTime(far), limit, enteringLimit, "ms", 1.0);
    figures.report(at + "connections made to open a folder again after a cut", reopeningConnections(far), limit, 1,
                   "connections", 1.0);
    if (hasMounts())
        figures.report(at + "listing of 1,000 files, beside the same folder mounted with sshfs", listing, peer,
                       mountedListingTime(far), "ms", 1.0);
}

int measureAll()
{
    FarHostWithTree far;
    Figures figures;
    double firstListingAtOnce = 0;
    for (auto const roundTrip : {Milliseconds(0), Milliseconds(50), Milliseconds(150)})
        measureAt(far, figures, roundTrip, firstListingAtOnce);
    if (!hasMounts())
        std::puts("Nothing to compare with: there is no sshfs, or no permission to mount.");
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::measureAll();
}
