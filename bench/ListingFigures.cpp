// What it costs to list folders of a host for certain: the question beside each listing, folders that a person has
// left, and folders of half a million files.

#include "TWEngine/Shell/PathQuestion.h"
#include "TWEngine/Shell/ResidentScript.h"
#include "TWEngine/Shell/ShellRequest.h"
#include "bench/FarHost.h"
#include "bench/Figure.h"
#include "bench/ManyFiles.h"

#include <mutex>
#include <stdexcept>

namespace tw::bench {
namespace {

using test::TemporaryFolder;
using Milliseconds = std::chrono::milliseconds;
using enum Figures::Yardstick;

constexpr int runs = 5;
constexpr Milliseconds roundTrip{50};

/// The time of the host for the question beside a listing, in milliseconds.
constexpr double questionLimit = 0.3;

constexpr int listingsInARow = 200;

/// A line of 2 Mbit/s, on which the names of the left folder take half a minute.
constexpr double narrowBytesPerSecond = 250e3;
constexpr int leftFiles = 100'000;
/// Beside two round trips: what is still in flight of the left folder.
constexpr double leftOverhead = 300;

constexpr int wholeFiles = 500'000;
constexpr double largestWholeRatio = 1.3;
constexpr double firstRowsLimit = 700;

constexpr std::string_view nonce = "0123456789abcdef";

/// Runs a program for the shell in a bash of this machine, in milliseconds.
double bashTime(std::string const &program)
{
    TemporaryFolder const folder;
    auto const script = folder.file("script", program);
    auto const command = "bash -s <'" + script + "' >/dev/null";
    return millisecondsOf([&] {
        if (std::system(command.c_str()) != 0)
            throw std::runtime_error("failed: " + command);
    });
}

std::string listings(std::string const &path, bool withQuestion)
{
    auto program = ResidentScript::posix(nonce, 8U << 20U) + '\n' + PathQuestion::script(nonce);
    for (std::uint64_t id = 1; id <= listingsInARow; ++id) {
        program += ShellRequest::list(ShellDialect::posix, path, 1).numbered(2 * id);
        if (withQuestion)
            program += ShellRequest::ask(path).numbered(2 * id + 1);
    }
    return program;
}

void measureQuestion(Figures &figures)
{
    TemporaryFolder const folder;
    folder.file("file");
    auto const medians = takeTurns(
        2 * runs, [&] { return bashTime(listings(folder.path(), true)); },
        [&] { return bashTime(listings(folder.path(), false)); });
    figures.report("the question beside a listing", (medians.subject - medians.peer) / listingsInARow, limit,
                   questionLimit, "ms", 1.0);
}

std::shared_ptr<Browser> shallowBrowser(FarHost &far)
{
    return far.browser(far.provider(), {.prefetchDepth = 1});
}

Task<void> openUntilStopped(std::shared_ptr<Browser> browser, std::string path)
{
    co_await outcomeOf(browser->open(path));
}

/// How long the next folder takes after one was left that the host has begun to send.
double nextFolderTime(FarHost &far, std::string const &leftFolder, Milliseconds stay)
{
    TemporaryFolder const next;
    next.file("file");
    auto const browser = shallowBrowser(far);
    far.loop.run(browser->connect());
    std::stop_source leave;
    auto const pane = far.engine.makeStrand();
    spawn({pane.executor(), leave.get_token()}, openUntilStopped(browser, leftFolder));
    far.loop.run(far.engine.clock()->sleep(stay));
    leave.request_stop();
    auto const time = millisecondsOf([&] {
        if (far.loop.run(browser->open(next.path())).snapshot.count() != 1)
            throw std::runtime_error("the listing is not whole");
    });
    far.loop.run(browser->shutdown());
    return time;
}

void measureLeftFolder(Figures &figures)
{
    ManyFiles const left(leftFiles);
    FarHost far(roundTrip);
    far.line.setSpeed(narrowBytesPerSecond);
    for (auto const stay : {Milliseconds(200), Milliseconds(1000), Milliseconds(3000)}) {
        std::vector<double> times;
        for (int run = 0; run < runs; ++run)
            times.push_back(nextFolderTime(far, left.path(), stay));
        figures.report("2 Mbit/s, the folder after one of 100,000 files that was left after " +
                           std::to_string(stay.count()) + " ms",
                       median(std::move(times)), limit, 2 * static_cast<double>(roundTrip.count()) + leftOverhead, "ms",
                       1.0);
    }
}

/// What `find` takes over a shell that is open already.
double findTime(FarHost &far, std::string const &path)
{
    TemporaryFolder const pipes;
    auto const script = pipes.file("script", "sleep 1\nfind -H '" + path +
                                                 "' -maxdepth 1 -mindepth 1 -printf '%y\\t%s\\t%T@\\t%m\\t%P\\0'\n");
    // The shell is up before it is asked; the time is that between the request and the end.
    auto const command = "(cat '" + script + "') | " + far.client.program() + " far 'bash -s' >/dev/null";
    auto const idle = "(echo sleep 1) | " + far.client.program() + " far 'bash -s' >/dev/null";
    auto const run = [](std::string const &what) {
        return millisecondsOf([&] {
            if (std::system(what.c_str()) != 0)
                throw std::runtime_error("failed: " + what);
        });
    };
    auto const whole = run(command);
    return whole - run(idle) + static_cast<double>(roundTrip.count());
}

void measureWholeFolder(Figures &figures)
{
    ManyFiles const many(wholeFiles);
    FarHost far(roundTrip);
    std::vector<double> firstRows;
    auto const whole = [&] {
        auto const provider = far.provider();
        far.loop.run(provider->connect());
        auto const begun = std::chrono::steady_clock::now();
        std::mutex mutex;
        double first = 0;
        auto const onPart = [&](DirectorySnapshot const &part) {
            std::lock_guard const lock(mutex);
            if (first == 0 && part.count() > 0)
                first = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begun).count();
        };
        auto const time = millisecondsOf([&] {
            if (far.loop.run(provider->fetchWhole(many.path(), onPart)).at(many.path()).count() != wholeFiles)
                throw std::runtime_error("the listing is not whole");
        });
        far.loop.run(provider->disconnect());
        firstRows.push_back(first == 0 ? time : first);
        return time;
    };
    auto const medians = takeTurns(3, whole, [&] { return findTime(far, many.path()); });
    figures.report("50 ms away, 500,000 files whole, beside find over an open shell", medians.subject, peer,
                   medians.peer, "ms", largestWholeRatio);
    figures.report("50 ms away, first rows of 500,000 files", median(std::move(firstRows)), limit, firstRowsLimit, "ms",
                   1.0);
}

int measureAll()
{
    Figures figures;
    measureQuestion(figures);
    measureLeftFolder(figures);
    measureWholeFolder(figures);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::measureAll();
}
