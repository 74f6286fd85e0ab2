// What it costs to ask ssh for the settings of a host: once before the first connection, and again only after a change.

#include "TWEngine/Runtime/ChildCommand.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/HostConfiguration.h"
#include "bench/Figure.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/WaitFor.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <stdexcept>

namespace tw::bench {
namespace {

constexpr double limitMilliseconds = 15.0;
constexpr int hosts = 400;
constexpr int runs = 21;

/// Of somebody with many hosts.
std::string configuration()
{
    std::string text;
    for (int host = 0; host < hosts; ++host)
        text += "Host host" + std::to_string(host) + "\n  HostName 192.0.2.1\n  ConnectTimeout 3\n";
    return text;
}

int run()
{
    EngineRuntime runtime;
    test::TemporaryFolder const folder;
    auto const file = folder.file("config", configuration());
    auto const ssh = folder.file("ssh", "#!/bin/sh\nexec /usr/bin/ssh -F '" + file + "' \"$@\"\n");
    std::filesystem::permissions(ssh, std::filesystem::perms::owner_all);
    auto const asked = std::make_shared<HostConfiguration>(runtime, ssh);

    int next = 0;
    auto const settingsOf = [&](int host) {
        auto const settings = test::waitFor(asked->settingsOf("host" + std::to_string(host)));
        if (settings.connectTimeout != std::chrono::seconds(3))
            throw std::runtime_error("ssh did not answer");
    };
    auto const first = takeTurns(
        runs, [&] { return millisecondsOf([&] { settingsOf(next++); }); },
        [&] {
            return millisecondsOf(
                [&] { test::runCommand(runtime.io(), {.program = ssh, .arguments = {"-G", "--", "host0"}}); });
        });
    auto const again = takeTurns(
        runs, [&] { return millisecondsOf([&] { settingsOf(0); }); },
        [&] { return millisecondsOf([&] { settingsOf(next++); }); });

    Figures figures;
    figures.report("the settings of a host", first.subject, Figures::Yardstick::limit, limitMilliseconds, "ms", 1.0);
    figures.report("the settings of a host, and ssh -G alone", first.subject, Figures::Yardstick::peer, first.peer,
                   "ms", 2.0);
    figures.report("the same settings again, and for the first time", again.subject, Figures::Yardstick::peer,
                   again.peer, "ms", 0.2);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::run();
}
