// What packing and unpacking cost beside the same tools called by hand, in one run, and how long a cancel takes.

#include "TWCore/Async/ChildTask.h"
#include "TWEngine/Archives/ArchiveEngine.h"
#include "TWEngine/SSH/SSHProvider.h"
#include "bench/BenchLoop.h"
#include "bench/Figure.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/TestHost.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <unistd.h>

namespace tw::bench {
namespace {

using test::SSHClient;
using test::TemporaryFolder;
using test::TestHost;

constexpr int runs = 5;
/// For one figure, so that the whole table takes minutes.
constexpr std::chrono::seconds enough{25};
constexpr int manyFiles = 10'000;
constexpr std::size_t fileBytes = 4096;
constexpr double largestInPlace = 1.02;
constexpr double largestOfAStream = 1.05;
constexpr double cancelLimit = 200;
/// The tool runs by then, and is far from its end.
constexpr std::chrono::milliseconds timeToBegin{300};

/// A host, which is this machine, and files to pack.
class Bench {
public:
    Bench()
    {
        std::filesystem::create_directory(source.path("many"));
        std::string content(fileBytes, 'x');
        std::uint32_t state = 1;
        for (int index = 0; index < manyFiles; ++index) {
            // Half of it cannot be compressed, as in most folders.
            for (std::size_t place = 0; place < content.size() / 2; ++place)
                content[place] = static_cast<char>((state = state * 1'664'525 + 1'013'904'223) >> 24U);
            std::ofstream(source.path("many/file " + std::to_string(index)), std::ios::binary) << content;
        }
        byHand("tar -czf " + archive() + " -C " + source.path() + " many");
        client.add("near", host.address());
        near = std::make_shared<SSHProvider>(
            SSHProvider::Collaborators{.engine = engine,
                                       .sshProgram = client.program(),
                                       .sockets = {.base = sockets.path(), .user = ::getuid()}},
            "near");
        loop.run(near->connect());
    }

    ~Bench() { loop.run(near->disconnect()); }

    Bench(Bench const &) = delete;
    Bench &operator=(Bench const &) = delete;

    std::string archive() const { return source.path("packed.tar.gz"); }

    TransferEndpoint here(std::string path) const { return TransferEndpoint::local(std::move(path)); }

    TransferEndpoint there(std::string path) const { return TransferEndpoint::remote(near, std::move(path)); }

    /// The ssh client that shares the connection, as a piece of a shell command.
    std::string ssh()
    {
        auto command = client.program();
        for (auto const &option : loop.run(near->transportOptions()))
            command += " '" + option + "'";
        return command + " -- near ";
    }

    double packTime(TransferEndpoint const &from, TransferEndpoint const &to)
    {
        return timeOf([&](ArchiveEngine &archives) {
            return archives.pack({"many"}, from, to, ArchiveFormat::tarGz, keep<TransferProgress>);
        });
    }

    double unpackTime(TransferEndpoint const &from, TransferEndpoint const &to)
    {
        return timeOf([&](ArchiveEngine &archives) { return archives.unpack(from, to, keep<TransferProgress>); });
    }

    /// From the cancel of work that has begun to its end.
    template <class Begin>
    double cancelTime(Begin begin)
    {
        clear();
        auto const archives = makeArchives();
        return loop.run(timeToCancel(archives, begin(*archives), engine.clock()));
    }

    double byHand(std::string const &command)
    {
        clear();
        return millisecondsOf([&] {
            if (std::system(command.c_str()) != 0)
                throw std::runtime_error("failed: " + command);
        });
    }

    EngineRuntime engine;
    TestHost host{engine};
    SSHClient client;
    BenchLoop loop;
    TemporaryFolder source;
    TemporaryFolder target;

private:
    std::shared_ptr<ArchiveEngine> makeArchives()
    {
        auto tools = TransferTools::find();
        tools.ssh = client.program();
        return std::make_shared<ArchiveEngine>(engine, tools);
    }

    static Task<double> timeToCancel(std::shared_ptr<ArchiveEngine> archives, Task<void> work,
                                     std::shared_ptr<Clock> clock)
    {
        auto const context = co_await currentContext();
        auto const running = ChildTask<void>::start(context, std::move(work));
        co_await clock->sleep(timeToBegin);
        auto const before = clock->steadyNow();
        archives->cancel();
        auto const ended = co_await outcomeOf(running.join());
        if (!ended.failure)
            throw std::runtime_error("the work was done before it was cancelled");
        co_return std::chrono::duration<double, std::milli>(clock->steadyNow() - before).count();
    }

    template <class Begin>
    double timeOf(Begin begin)
    {
        clear();
        auto const archives = makeArchives();
        return millisecondsOf([&] { loop.run(begin(*archives)); });
    }

    void clear() const
    {
        for (auto const &entry : std::filesystem::directory_iterator(target.path()))
            std::filesystem::remove_all(entry.path());
    }

    TemporaryFolder sockets;
    std::shared_ptr<SSHProvider> near;
};

template <class Subject>
void measure(Figures &figures, Bench &bench, std::string const &title, Subject subject, std::string const &command,
             double largest)
{
    auto const medians = takeTurns(runs, subject, [&] { return bench.byHand(command); }, enough);
    figures.report(title, medians.subject, Figures::Yardstick::peer, medians.peer, "ms", largest);
}

void measureCancels(Figures &figures, Bench &bench)
{
    auto const report = [&](std::string const &title, TransferEndpoint const &from, TransferEndpoint const &to) {
        auto const time = bench.cancelTime([&](ArchiveEngine &archives) {
            return archives.pack({"many"}, from, to, ArchiveFormat::tarGz, keep<TransferProgress>);
        });
        figures.report("cancel of packing " + title, time, Figures::Yardstick::limit, cancelLimit, "ms", 1);
    };
    auto const from = bench.source.path();
    auto const packed = bench.target.path("a.tar.gz");
    report("here", bench.here(from), bench.here(packed));
    report("on a host", bench.there(from), bench.there(packed));
    report("from a host to here", bench.there(from), bench.here(packed));
}

int measureAll()
{
    Figures figures;
    Bench bench;
    auto const from = bench.source.path();
    auto const packed = bench.target.path("a.tar.gz");
    auto const unpacked = bench.target.path("out");
    auto const makeFolder = "mkdir " + unpacked + " && ";
    measure(
        figures, bench, "pack 10,000 files in place, beside tar alone",
        [&] { return bench.packTime(bench.here(from), bench.here(packed)); },
        "tar -czf " + packed + " -C " + from + " -- many", largestInPlace);
    measure(
        figures, bench, "unpack 10,000 files in place, beside tar alone",
        [&] { return bench.unpackTime(bench.here(bench.archive()), bench.here(unpacked)); },
        makeFolder + "tar -xf " + bench.archive() + " -C " + unpacked, largestInPlace);
    measure(
        figures, bench, "pack 10,000 files of a host to here, beside the same pipe by hand",
        [&] { return bench.packTime(bench.there(from), bench.here(packed)); },
        bench.ssh() + "'tar -czf - -C " + from + " -- many' > " + packed, largestOfAStream);
    measure(
        figures, bench, "unpack 10,000 files of here to a host, beside the same pipe by hand",
        [&] { return bench.unpackTime(bench.here(bench.archive()), bench.there(unpacked)); },
        makeFolder + "cat " + bench.archive() + " | " + bench.ssh() + "'tar -xzf - -C " + unpacked + "'",
        largestOfAStream);
    measureCancels(figures, bench);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::measureAll();
}
