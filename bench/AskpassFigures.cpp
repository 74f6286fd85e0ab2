// How long ssh waits for a saved password: the whole process that it starts for it, with a key store that is running.
//
// This program is both halves, as the real one is; between them stands a shell under the name of ssh.

#include "TWEngine/Passwords/Askpass.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "bench/Figure.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/PasswordHost.h"
#include "tests/hosts/PrivateKeyring.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <stdexcept>

namespace tw::bench {
namespace {

constexpr double limitMilliseconds = 60.0;
constexpr int runs = 21;
constexpr auto password = "correct horse";

void savePassword(EngineRuntime &runtime, Environment const &environment)
{
    auto const saved = test::runCommand(runtime.io(),
                                        {.program = test::passwordProgram(),
                                         .arguments = {"--store", "60000", "save", "host"},
                                         .environment = environment},
                                        password);
    if (saved.output != "yes")
        throw std::runtime_error("the password could not be saved: " + saved.error);
}

int run()
{
    EngineRuntime runtime;
    test::PrivateKeyring const keyring(runtime);
    test::TemporaryFolder const folder;
    auto const ssh = folder.path("ssh");
    std::filesystem::copy_file("/bin/sh", ssh);
    auto environment = inheritedEnvironment();
    environment["DBUS_SESSION_BUS_ADDRESS"] = keyring.address();
    savePassword(runtime, environment);
    environment["TW_ASKPASS_ACCOUNT"] = "host";
    auto const self = std::filesystem::read_symlink("/proc/self/exe").string();

    std::vector<double> times;
    for (int round = 0; round < runs; ++round)
        times.push_back(millisecondsOf([&] {
            auto const asked = test::runCommand(
                runtime.io(), {.program = ssh,
                               .arguments = {"-c", "'" + self + "' \"ann@host's password: \"; exit $?"},
                               .environment = environment});
            if (asked.output != std::string(password) + '\n')
                throw std::runtime_error("no password was told: " + asked.error);
        }));
    Figures figures;
    figures.report("from ssh's question to the saved password", median(std::move(times)), Figures::Yardstick::limit,
                   limitMilliseconds, "ms", 1.0);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main(int count, char **arguments)
{
    if (auto const status = tw::Askpass::run({arguments, arguments + count}))
        return *status;
    return tw::bench::run();
}
