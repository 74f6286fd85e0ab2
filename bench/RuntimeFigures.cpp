// What the runtime adds to what the system takes: bytes through the pipe of a child, and work handed to another thread.

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "bench/BenchLoop.h"
#include "bench/Figure.h"

#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <unistd.h>

namespace tw::bench {
namespace {

constexpr std::size_t streamBytes = std::size_t{1} << 30;

constexpr std::size_t readBytes = 131'072; // what cat reads at a time

/// Few at a time and many times: on which cores two threads lie matters more than all else, and changes.
constexpr int hops = 2'000;
constexpr int hopRuns = 41;

std::shared_ptr<ChildProcess> start(EngineRuntime &runtime, ChildCommand const &command)
{
    auto started = ChildProcess::start(runtime.io(), command);
    if (!started)
        throw started.error();
    return *started;
}

Task<std::size_t> countOutput(std::shared_ptr<ChildProcess> child)
{
    std::size_t count = 0;
    std::string buffer;
    buffer.reserve(readBytes);
    for (;;) {
        buffer = co_await child->read(ChildOutput::standard, std::move(buffer));
        if (buffer.empty())
            co_return count;
        count += buffer.size();
    }
}

void readStream(EngineRuntime &runtime, BenchLoop &loop)
{
    auto const child =
        start(runtime,
              {.program = "head", .arguments = {"-c", std::to_string(streamBytes), "/dev/zero"}, .output = PipeEnd{}});
    auto const count = loop.run(onStrand(runtime.makeStrand(), countOutput(child)));
    auto const status = loop.run(child->wait());
    if (count != streamBytes || !status.isSuccess())
        throw std::runtime_error("the stream is not whole");
}

void pipeInShell(EngineRuntime &runtime, BenchLoop &loop)
{
    auto const script = "head -c " + std::to_string(streamBytes) + " /dev/zero | cat";
    auto const shell = start(runtime, {.program = "sh", .arguments = {"-c", script}});
    auto const status = loop.run(shell->wait());
    if (!status.isSuccess())
        throw std::runtime_error("the shell's pipe broke");
}

/// The same without us: the plainest of loops, on a thread that may block.
void readBlocking()
{
    auto *const child = popen(("head -c " + std::to_string(streamBytes) + " /dev/zero").c_str(), "r");
    if (!child)
        throw std::runtime_error("there is no child to read from");
    std::string buffer(readBytes, '\0');
    std::size_t count = 0;
    for (ssize_t got = 0; (got = ::read(fileno(child), buffer.data(), buffer.size())) > 0;)
        count += static_cast<std::size_t>(got);
    if (pclose(child) != 0 || count != streamBytes)
        throw std::runtime_error("the stream is not whole");
}

Task<void> nothing()
{
    co_return;
}

/// Each round is two hops: there and back.
Task<void> hopBetween(Strand other, int rounds)
{
    for (int round = 0; round < rounds; ++round)
        co_await onStrand(other, nothing());
}

/// The same without us: two threads that wake each other in turn.
void handOver(int rounds)
{
    std::mutex mutex;
    std::condition_variable turned;
    int turn = 0;
    auto const take = [&](int parity) {
        for (int round = 0; round < rounds; ++round) {
            std::unique_lock lock(mutex);
            turned.wait(lock, [&] { return turn % 2 == parity; });
            ++turn;
            turned.notify_one();
        }
    };
    std::jthread const other([&] { take(1); });
    take(0);
}

int run()
{
    EngineRuntime runtime;
    BenchLoop loop;
    Figures figures;

    auto const stream = takeTurns(
        7, [&] { return millisecondsOf([&] { readStream(runtime, loop); }); },
        [&] { return millisecondsOf([&] { pipeInShell(runtime, loop); }); });
    figures.report("1 GiB read from a child against the shell's pipe into cat", stream.subject,
                   Figures::Yardstick::peer, stream.peer, "ms", 1.25);

    // Which of a pipe's two sides wakes the other, and on which core, decides the figure above more than anything that
    // either does. This one has the same child and the same process to read it.
    auto const plain = takeTurns(
        7, [&] { return millisecondsOf([&] { readStream(runtime, loop); }); },
        [] { return millisecondsOf([] { readBlocking(); }); });
    figures.report("1 GiB read from a child against a loop of blocking reads", plain.subject, Figures::Yardstick::peer,
                   plain.peer, "ms", 1.25);

    WorkerPool const elsewhere({.interactive = 1, .background = 0});
    Strand const onAnotherThread{elsewhere.executor(WorkPriority::interactive)};
    auto const perHop = [](auto const &work) { return millisecondsOf(work) * 1000.0 / hops; };
    auto const hopTo = [&](Strand other) { loop.run(onStrand(runtime.makeStrand(), hopBetween(other, hops / 2))); };
    auto const crossing = takeTurns(
        hopRuns, [&] { return perHop([&] { hopTo(onAnotherThread); }); },
        [&] { return perHop([] { handOver(hops / 2); }); });
    figures.report("a hop to a strand on another thread against a bare hand-over between two threads", crossing.subject,
                   Figures::Yardstick::peer, crossing.peer, "us", 2.0);

    auto const staying = takeTurns(
        hopRuns, [&] { return perHop([&] { hopTo(runtime.makeStrand()); }); },
        [&] { return perHop([] { handOver(hops / 2); }); });
    figures.report("a hop to a strand of the same threads against a bare hand-over between two threads",
                   staying.subject, Figures::Yardstick::peer, staying.peer, "us", 1.0);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::run();
}
