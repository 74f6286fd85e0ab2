// What moving bytes costs beside the same programs called by hand, in one run.
//
//   TransferFigures [here|near|memory|pump|cancel|far...]    only these figures
//   TARNWICK_BENCH_PART=8                                    an eighth of all sizes

#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/SSHProvider.h"
#include "TWEngine/Transfer/TarPipe.h"
#include "TWEngine/Transfer/TransferEngine.h"
#include "bench/BenchLoop.h"
#include "bench/Figure.h"
#include "tests/hosts/DelayProxy.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/TestHost.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>
#include <stdexcept>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

namespace tw::bench {
namespace {

using test::DelayProxy;
using test::SSHClient;
using test::TemporaryFolder;
using test::TestHost;
using Names = std::vector<std::string>;

/// A part of the sizes, as 1 in N, for a machine that has other work: TARNWICK_BENCH_PART=16.
std::int64_t part()
{
    auto const *const text = std::getenv("TARNWICK_BENCH_PART");
    return text ? std::max(1L, std::strtol(text, nullptr, 10)) : 1;
}

/// Two medians of fewer runs differ by more than the limits allow: the time of a copy varies by a fifth and more.
constexpr int runs = 31;
/// For one figure, so that the whole table takes minutes.
constexpr std::chrono::seconds enough{180};
constexpr int cancelRuns = 11;
constexpr std::int64_t gibibyte = std::int64_t{1} << 30U;
constexpr int manyFiles = 10'000;
constexpr std::chrono::milliseconds farAway{50};

/// Beside the same pipe by hand: what we do before the first byte and behind the last one.
constexpr double largestOfAStream = 1.05;
constexpr double largestOfManyFiles = 1.1;
constexpr double largestHere = 1.05;
constexpr double largestPump = 1.1;
/// Beside cp on the host and one round trip.
constexpr double serverSideOverhead = 10;
constexpr double cancelLimit = 200;
/// Buffers are as large as a pipe, however much passes.
constexpr double mostMemory = 4;

double commandTime(std::string const &command)
{
    return millisecondsOf([&] {
        if (std::system(command.c_str()) != 0)
            throw std::runtime_error("failed: " + command);
    });
}

/// What this process and its children have worked so far, in milliseconds: those that have ended and were awaited.
double workedSoFar()
{
    double sum = 0;
    for (auto const who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        ::getrusage(who, &usage);
        for (auto const &time : {usage.ru_utime, usage.ru_stime})
            sum += static_cast<double>(time.tv_sec) * 1000 + static_cast<double>(time.tv_usec) / 1000;
    }
    return sum;
}

/// How long all processors together are busy with `work`, without what other programs do meanwhile.
template <class Work>
double workOf(Work const &work)
{
    auto const before = workedSoFar();
    work();
    return workedSoFar() - before;
}

/// Bytes that no file system leaves out.
void writeFile(std::string const &path, std::int64_t bytes)
{
    std::ofstream file(path, std::ios::binary);
    std::string piece(std::size_t{1} << 20U, 'x');
    std::uint32_t state = 1;
    for (auto &byte : piece)
        byte = static_cast<char>((state = state * 1'664'525 + 1'013'904'223) >> 24U);
    for (; bytes > 0; bytes -= std::ssize(piece))
        file.write(piece.data(), std::min<std::int64_t>(bytes, std::ssize(piece)));
}

std::int64_t residentKiB()
{
    std::ifstream lines("/proc/self/status");
    std::string word;
    std::int64_t value = 0;
    while (lines >> word)
        if (word == "VmRSS:")
            lines >> value;
    return value;
}

/// Hosts, all of which are this machine, and what lies on them.
class Bench {
public:
    Bench()
    {
        writeFile(source.path("large"), gibibyte / part());
        std::filesystem::create_directory(source.path("many"));
        for (int index = 0; index < manyFiles / part(); ++index)
            writeFile(source.path("many/file " + std::to_string(index)), 4096);
        client.add("near", host.address());
        client.add("other", host.address());
        client.add("far", host.address().through(line.port()));
        near = connect("near");
        other = connect("other");
        far = connect("far");
    }

    ~Bench()
    {
        for (auto const &each : {near, other, far})
            loop.run(each->disconnect());
    }

    Bench(Bench const &) = delete;
    Bench &operator=(Bench const &) = delete;

    TransferEndpoint here(TemporaryFolder const &folder) const { return TransferEndpoint::local(folder.path()); }

    TransferEndpoint on(std::shared_ptr<SSHProvider> const &provider, TemporaryFolder const &folder) const
    {
        return TransferEndpoint::remote(provider, folder.path());
    }

    /// The time of one copy into an empty folder.
    double copyTime(Names const &names, TransferEndpoint const &from, TransferEndpoint const &to)
    {
        clear();
        auto tools = TransferTools::find();
        tools.ssh = client.program();
        auto const transfer = std::make_shared<TransferEngine>(engine, tools);
        return millisecondsOf([&] {
            loop.run(transfer->copy(names, from, to, [](TransferProgress const &progress) { keep(progress); }));
        });
    }

    double handTime(std::string const &command)
    {
        clear();
        return commandTime(command);
    }

    /// The ssh client of `provider`, which shares its connection, as a piece of a shell command.
    std::string ssh(std::shared_ptr<SSHProvider> const &provider)
    {
        auto command = client.program();
        for (auto const &option : loop.run(provider->transportOptions()))
            command += " '" + option + "'";
        return command + " -- " + provider->host() + " ";
    }

    /// Removes what was copied, and leaves the disk at rest: else a run pays for what the one before it has written.
    void clear() const
    {
        for (auto const &entry : std::filesystem::directory_iterator(target.path()))
            std::filesystem::remove_all(entry.path());
        ::sync();
    }

    EngineRuntime engine;
    TestHost host{engine};
    DelayProxy line{host.address().port, farAway};
    SSHClient client;
    BenchLoop loop;
    TemporaryFolder source;
    TemporaryFolder target;
    TemporaryFolder lists;
    std::shared_ptr<SSHProvider> near;
    std::shared_ptr<SSHProvider> other;
    std::shared_ptr<SSHProvider> far; ///< through `line`

private:
    std::shared_ptr<SSHProvider> connect(std::string const &name)
    {
        auto const provider = std::make_shared<SSHProvider>(
            SSHProvider::Collaborators{.engine = engine,
                                       .sshProgram = client.program(),
                                       .sockets = {.base = sockets.path(), .user = ::getuid()}},
            name);
        loop.run(provider->connect());
        return provider;
    }

    TemporaryFolder sockets;
};

std::string pack(Bench const &bench, std::string const &name)
{
    return "tar -cf - -C " + bench.source.path() + " -- " + name;
}

std::string unpack(Bench const &bench)
{
    return "tar -xpf - -C " + bench.target.path();
}

void measureStreams(Figures &figures, Bench &bench, std::shared_ptr<SSHProvider> const &host, std::string const &name,
                    std::string const &what, double largest)
{
    auto const &other = bench.other;
    auto const measure = [&](std::string const &title, TransferEndpoint const &from, TransferEndpoint const &to,
                             std::string const &byHand) {
        auto const medians = takeTurns(
            runs, [&] { return bench.copyTime({name}, from, to); }, [&] { return bench.handTime(byHand); }, enough);
        figures.report(what + " " + title + ", beside the same pipe by hand", medians.subject, Figures::Yardstick::peer,
                       medians.peer, "ms", largest);
    };
    measure("up", bench.here(bench.source), bench.on(host, bench.target),
            pack(bench, name) + " | " + bench.ssh(host) + "'" + unpack(bench) + "'");
    measure("down", bench.on(host, bench.source), bench.here(bench.target),
            bench.ssh(host) + "'" + pack(bench, name) + "' | " + unpack(bench));
    measure("from host to host", bench.on(host, bench.source), bench.on(other, bench.target),
            bench.ssh(host) + "'" + pack(bench, name) + "' | " + bench.ssh(other) + "'" + unpack(bench) + "'");
}

/// One cp for all names of a folder.
std::string copyByHand(Bench &bench, std::string const &folder, Names const &names)
{
    std::string list;
    for (auto const &name : names)
        list += name + '\0';
    return "cd " + folder + " && xargs -0 -s 1000000 -a " + bench.lists.file("names", list) + " cp -a -t " +
           bench.target.path() + " --";
}

void measureHere(Figures &figures, Bench &bench)
{
    auto const measure = [&](std::string const &title, Names const &names, std::string const &byHand) {
        auto const medians = takeTurns(
            runs, [&] { return bench.copyTime(names, bench.here(bench.source), bench.here(bench.target)); },
            [&] { return bench.handTime(byHand); }, enough);
        figures.report("local copy of " + title + ", beside cp -a", medians.subject, Figures::Yardstick::peer,
                       medians.peer, "ms", largestHere);
    };
    auto const from = bench.source.path();
    auto const to = bench.target.path();
    measure("1 GiB", {"large"}, "cp -a " + from + "/large " + to);
    measure("10,000 files in a folder", {"many"}, "cp -a " + from + "/many " + to);

    Names names;
    for (auto const &entry : std::filesystem::directory_iterator(bench.source.path("many")))
        names.push_back(entry.path().filename());
    auto const medians = takeTurns(
        runs,
        [&] {
            return bench.copyTime(names, TransferEndpoint::local(bench.source.path("many")), bench.here(bench.target));
        },
        [&] { return bench.handTime(copyByHand(bench, from + "/many", names)); }, enough);
    figures.report("local copy of 10,000 names, beside cp -a of them", medians.subject, Figures::Yardstick::peer,
                   medians.peer, "ms", largestHere);
}

/// 10,000 folders with a file in each.
void measureFolders(Figures &figures, Bench &bench)
{
    TemporaryFolder const folders;
    Names names;
    for (int index = 0; index < manyFiles / part(); ++index) {
        names.push_back("folder " + std::to_string(index));
        folders.folder(names.back());
        writeFile(folders.path(names.back() + "/file"), 4096);
    }
    auto const medians = takeTurns(
        runs, [&] { return bench.copyTime(names, TransferEndpoint::local(folders.path()), bench.here(bench.target)); },
        [&] { return bench.handTime(copyByHand(bench, folders.path(), names)); }, enough);
    figures.report("local copy of 10,000 folders, beside cp -a of them", medians.subject, Figures::Yardstick::peer,
                   medians.peer, "ms", largestHere);
}

/// Other programs that people use for it, for comparison only.
void showOthers(Bench &bench)
{
    auto const client = bench.ssh(bench.near);
    TemporaryFolder const scripts;
    auto const ssh = scripts.file("ssh", "#!/bin/sh\nexec " + client.substr(0, client.rfind(" -- ")) + " \"$@\"\n");
    std::filesystem::permissions(ssh, std::filesystem::perms::owner_all);
    auto const show = [&](std::string const &title, std::string const &from, std::string const &to) {
        std::vector<double> ofRsync;
        std::vector<double> ofScp;
        for (int run = 0; run < 3; ++run) {
            ofRsync.push_back(bench.handTime("rsync -a -e " + ssh + " " + from + " " + to));
            // Its older protocol: the newer one wants an ssh whose options leave the kind of session open.
            ofScp.push_back(bench.handTime("scp -O -q -r -S " + ssh + " " + from + " " + to));
        }
        std::printf("10,000 files of 4 KiB %s, by others: rsync -a %.3f ms, scp -r %.3f ms\n", title.c_str(),
                    median(std::move(ofRsync)), median(std::move(ofScp)));
        std::fflush(stdout);
    };
    show("up", bench.source.path("many"), "near:" + bench.target.path());
    show("down", "near:" + bench.source.path("many"), bench.target.path());
}

void measureOnHost(Figures &figures, Bench &bench)
{
    auto const medians = takeTurns(
        runs,
        [&] { return bench.copyTime({"large"}, bench.on(bench.far, bench.source), bench.on(bench.far, bench.target)); },
        [&] { return bench.handTime("cp -a " + bench.source.path() + "/large " + bench.target.path()); }, enough);
    auto const limit = medians.peer + std::chrono::duration<double, std::milli>(farAway).count() + serverSideOverhead;
    figures.report("server-side copy of 1 GiB, 50 ms away, beside cp -a there, a round trip and 10 ms", medians.subject,
                   Figures::Yardstick::limit, limit, "ms", 1.0);
}

void measureMemory(Figures &figures, Bench &bench, std::string const &title, TransferEndpoint const &from,
                   TransferEndpoint const &to)
{
    bench.copyTime({"large"}, from, to);
    auto const idle = residentKiB();
    std::int64_t most = 0;
    std::atomic<bool> isOver = false;
    std::thread watcher([&] {
        while (!isOver) {
            most = std::max(most, residentKiB());
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    bench.copyTime({"large"}, from, to);
    isOver = true;
    watcher.join();
    figures.report("memory of a transfer of 1 GiB " + title + " over that of an idle engine",
                   static_cast<double>(std::max<std::int64_t>(most - idle, 0)) / 1024, Figures::Yardstick::limit,
                   mostMemory, "MiB", 1.0);
}

void measureMemories(Figures &figures, Bench &bench)
{
    measureMemory(figures, bench, "up", bench.here(bench.source), bench.on(bench.near, bench.target));
    measureMemory(figures, bench, "down", bench.on(bench.near, bench.source), bench.here(bench.target));
    measureMemory(figures, bench, "from host to host", bench.on(bench.near, bench.source),
                  bench.on(bench.other, bench.target));
}

/// The pump alone, between two programs that do hardly anything. What all three work is what a transfer pays for it
/// on a busy machine, and the time what it pays on one that is not.
void measurePump(Figures &figures, Bench &bench)
{
    TemporaryFolder const folder;
    auto const archive = folder.path("archive");
    commandTime(pack(bench, "large") + " > " + archive + " && " + pack(bench, "many") + " >> " + archive + ".many");
    for (auto const &file : {archive, archive + ".many"}) {
        auto const pump = [&] {
            auto const work = std::make_shared<TransferWork>(
                bench.engine, TransferTools(), Names{"large", "many"}, bench.here(bench.source),
                bench.here(bench.target), [](TransferProgress const &progress) { keep(progress); }, "archive");
            TarPipe::Stream stream{
                .names = work->names,
                .producer = {.program = "/usr/bin/cat", .arguments = {file}, .output = PipeEnd{}, .error = PipeEnd{}},
                .consumer = {.program = "/usr/bin/cat", .input = PipeEnd{}, .error = PipeEnd{}},
                .guard = MemberGuard(work->names, ShellDialect::posix)};
            auto const strand = bench.engine.makeStrand();
            bench.loop.run(onStrand(strand, TarPipe::run(work, std::move(stream))));
        };
        auto const byHand = [&] { commandTime("cat " + file + " | cat | cat >/dev/null"); };
        auto const title = "pump of " + std::string(file == archive ? "1 GiB" : "10,000 files of 4 KiB");
        auto const work = takeTurns(runs, [&] { return workOf(pump); }, [&] { return workOf(byHand); }, enough);
        figures.report(title + ", headers read, work beside that of cat", work.subject, Figures::Yardstick::peer,
                       work.peer, "ms", largestPump);
        auto const time =
            takeTurns(runs, [&] { return millisecondsOf(pump); }, [&] { return millisecondsOf(byHand); }, enough);
        figures.report(title + ", headers read, time beside that of cat", time.subject, Figures::Yardstick::peer,
                       time.peer, "ms", largestPump);
    }
}

Task<void> cancelAfter(EngineRuntime *engine, std::chrono::milliseconds time, std::shared_ptr<TransferEngine> transfer,
                       std::chrono::nanoseconds *at)
{
    co_await engine->clock()->sleep(time);
    *at = engine->clock()->steadyNow().time_since_epoch();
    transfer->cancel();
}

struct CancelledCopy {
    std::string title;
    TransferEndpoint from;
    TransferEndpoint to;
    std::string name = "endless";
    std::chrono::milliseconds time = std::chrono::milliseconds(300); ///< before the cancel
};

void measureCancel(Figures &figures, Bench &bench, CancelledCopy const &copy)
{
    std::vector<double> times;
    for (int run = 0; run < cancelRuns; ++run) {
        bench.clear();
        auto tools = TransferTools::find();
        tools.ssh = bench.client.program();
        auto const transfer = std::make_shared<TransferEngine>(bench.engine, tools);
        std::chrono::nanoseconds at{};
        auto const strand = bench.engine.makeStrand();
        spawn({strand.executor(), {}}, cancelAfter(&bench.engine, copy.time, transfer, &at));
        try {
            bench.loop.run(transfer->copy({copy.name}, copy.from, copy.to, [](TransferProgress const &) {}));
            throw std::runtime_error("the copy was over before its cancel");
        } catch (FileOperationError::Cancelled const &) {
        }
        auto const now = bench.engine.clock()->steadyNow().time_since_epoch();
        times.push_back(std::chrono::duration<double, std::milli>(now - at).count());
    }
    figures.report("cancel of a copy " + copy.title, median(times), Figures::Yardstick::limit, cancelLimit, "ms", 1.0);
}

void measureCancels(Figures &figures, Bench &bench)
{
    std::filesystem::resize_file(bench.source.file("endless"), 64 * gibibyte);
    auto const here = bench.here(bench.source);
    auto const near = bench.on(bench.near, bench.source);
    auto const toNear = bench.on(bench.near, bench.target);
    measureCancel(figures, bench, {"up", here, toNear});
    measureCancel(figures, bench, {"down", near, bench.here(bench.target)});
    measureCancel(figures, bench, {"from host to host", near, bench.on(bench.other, bench.target)});
    // cp has done with a hole at once.
    auto const soon = std::chrono::milliseconds(100) / part();
    measureCancel(figures, bench, {"on this machine", here, bench.here(bench.target), "large", soon});
    measureCancel(figures, bench, {"within a host", near, toNear, "large", soon});
    bench.clear();
}

struct Section {
    std::string_view name;
    void (*measure)(Figures &figures, Bench &bench);
};

constexpr std::array<Section, 6> sections{{
    {"here",
     [](Figures &figures, Bench &bench) {
         measureHere(figures, bench);
         measureFolders(figures, bench);
     }},
    {"near",
     [](Figures &figures, Bench &bench) {
         measureStreams(figures, bench, bench.near, "large", "1 GiB", largestOfAStream);
         measureStreams(figures, bench, bench.near, "many", "10,000 files of 4 KiB", largestOfManyFiles);
         showOthers(bench);
     }},
    {"memory", measureMemories},
    {"pump", measurePump},
    {"cancel", measureCancels},
    {"far",
     [](Figures &figures, Bench &bench) {
         measureStreams(figures, bench, bench.far, "many", "10,000 files of 4 KiB, 50 ms away,", largestOfManyFiles);
         measureOnHost(figures, bench);
     }},
}};

int measure(std::span<char *const> wanted)
{
    for (auto const *const name : wanted)
        if (std::ranges::find(sections, name, &Section::name) == sections.end()) {
            std::fprintf(stderr, "there are no such figures: %s\n", name);
            return 2;
        }
    Figures figures;
    Bench bench;
    for (auto const &section : sections)
        if (wanted.empty() || std::ranges::find(wanted, section.name) != wanted.end())
            section.measure(figures, bench);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main(int argc, char **argv)
{
    return tw::bench::measure(std::span(argv, static_cast<std::size_t>(argc)).subspan(1));
}
