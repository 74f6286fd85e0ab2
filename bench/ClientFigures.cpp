// What the ssh clients of hosts cost: their start, and the time until a silent host is an error.

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/SSHProvider.h"
#include "bench/BenchLoop.h"
#include "bench/Figure.h"
#include "tests/hosts/KeyPair.h"
#include "tests/hosts/Loopback.h"
#include "tests/hosts/SSHClient.h"
#include "tests/support/TemporaryFolder.h"

#include <cmath>
#include <stdexcept>

#include <unistd.h>

namespace tw::bench {
namespace {

using test::SSHClient;
using test::TemporaryFolder;

constexpr int starts = 101;
/// A person does not notice it, and a session needs tens of milliseconds anyway.
constexpr double startOverhead = 2;
constexpr double silenceTolerance = 0.5;

double startTime(EngineRuntime &runtime, BenchLoop &loop, ChildCommand::End end)
{
    ChildCommand const command{.program = std::string(SSHCommandLine::program), .arguments = {"-V"}, .end = end};
    return millisecondsOf([&] {
        auto const child = ChildProcess::start(runtime.io(), command).value();
        if (!loop.run(child->wait()).isSuccess())
            throw std::runtime_error("ssh does not start");
    });
}

/// Seconds until a host is an error that accepts the connection and says nothing.
double silenceTime(EngineRuntime &runtime, BenchLoop &loop, std::string const &configuration)
{
    // The system accepts what nobody takes from the queue.
    auto const listener = test::listenOnLoopback();
    TemporaryFolder folder;
    TemporaryFolder sockets;
    auto const key = test::KeyPair::generate(runtime.io(), folder.path("key"));
    SSHClient client;
    client.add("silent", {test::portOf(listener), key.publicKey, key.privateFile}, SSHClient::Knowledge::right,
               configuration);
    auto const provider = std::make_shared<SSHProvider>(
        SSHProvider::Collaborators{
            .engine = runtime, .sshProgram = client.program(), .sockets = {.base = sockets.path(), .user = ::getuid()}},
        "silent");
    auto const time = millisecondsOf([&] {
        try {
            loop.run(provider->connect());
        } catch (RemoteShellError::ConnectFailed const &) {
            return;
        }
        throw std::runtime_error("a silent host cannot be connected");
    });
    loop.run(provider->disconnect());
    return time / 1000;
}

int run()
{
    EngineRuntime runtime;
    BenchLoop loop;
    Figures figures;

    auto const start = takeTurns(
        starts, [&] { return startTime(runtime, loop, ChildCommand::End::withProgram); },
        [&] { return startTime(runtime, loop, ChildCommand::End::itself); });
    figures.report("an ssh that ends with the program, more than one that does not", start.subject - start.peer,
                   Figures::Yardstick::limit, startOverhead, "ms", 1.0);

    auto const tooFar = [](double time, double wanted) { return std::abs(time - wanted); };
    figures.report("a silent host without a setting, away from 10 s", tooFar(silenceTime(runtime, loop, {}), 10),
                   Figures::Yardstick::limit, silenceTolerance, "s", 1.0);
    figures.report("a silent host with ConnectTimeout 3, away from 3 s",
                   tooFar(silenceTime(runtime, loop, "ConnectTimeout 3"), 3), Figures::Yardstick::limit,
                   silenceTolerance, "s", 1.0);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::run();
}
