#include "tests/hosts/PrivateKeyring.h"

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/ProcessTree.h"
#include "tests/hosts/WaitFor.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <thread>

namespace tw::test {

namespace {

constexpr auto storeName = "org.freedesktop.secrets";

Environment environmentIn(TemporaryFolder const &folder)
{
    return {{"PATH", "/usr/bin:/bin"},
            {"HOME", folder.path("home")},
            {"XDG_RUNTIME_DIR", folder.path("runtime")},
            {"LC_ALL", "C.UTF-8"}};
}

Task<std::string> firstOutput(std::shared_ptr<ChildProcess> process)
{
    auto text = co_await process->read(ChildOutput::standard);
    co_return text;
}

} // namespace

PrivateKeyring::PrivateKeyring(EngineRuntime &runtime, Store store) : engine(runtime)
{
    folder.folder("home");
    folder.folder("services");
    std::filesystem::permissions(folder.folder("runtime"), std::filesystem::perms::owner_all);
    auto const configurationFile = folder.file("bus.conf", configuration());
    if (store != Store::absent) {
        auto const script = folder.file("store", storeCommand(store));
        std::filesystem::permissions(script, std::filesystem::perms::owner_all);
        folder.file("services/store.service",
                    "[D-BUS Service]\nName=" + std::string(storeName) + "\nExec=" + script + "\n");
    }
    auto started = ChildProcess::start(
        engine.io(),
        {.program = TARNWICK_SESSION_KEEPER,
         .arguments = {"/usr/bin/dbus-daemon", "--config-file=" + configurationFile, "--nofork", "--print-address"},
         .environment = environmentIn(folder),
         .output = PipeEnd(),
         .error = PipeEnd()});
    if (!started)
        throw std::move(started.error());
    bus = std::move(*started);
    output.collect(engine, bus);
    busAddress = waitFor(firstOutput(bus));
    if (busAddress.empty())
        throw std::runtime_error("dbus-daemon did not start: " + output.text());
    busAddress.erase(busAddress.find_last_not_of('\n') + 1);
}

PrivateKeyring::~PrivateKeyring()
{
    // The store first: between it and the bus is a process that waits for its end, and is collected by the bus.
    for (;;) {
        auto below = descendantsOf(bus->processId());
        std::erase_if(below, [](ProcessRecord const &process) { return process.hasEnded(); });
        if (below.empty())
            break;
        std::erase_if(below, [](ProcessRecord const &process) { return process.name == "dbus-daemon"; });
        std::ranges::for_each(below, killAndWait);
        std::this_thread::yield();
    }
    bus->kill();
    waitFor(bus->wait());
    output.waitForEnd();
}

void PrivateKeyring::lock()
{
    call("/org/freedesktop/secrets", "org.freedesktop.Secret.Service.Lock",
         {"array:objpath:/org/freedesktop/secrets/collection/login"});
}

std::string PrivateKeyring::call(std::string const &object, std::string const &method,
                                 std::vector<std::string> arguments)
{
    std::vector<std::string> all{"--bus=" + busAddress, "--print-reply", "--dest=" + std::string(storeName), object,
                                 method};
    std::ranges::move(arguments, std::back_inserter(all));
    auto const outcome = runCommand(engine.io(), {.program = "dbus-send", .arguments = std::move(all)});
    if (!outcome.status.isSuccess())
        throw std::runtime_error(method + ": " + outcome.error);
    return outcome.output;
}

std::size_t PrivateKeyring::promptCalls(std::string const &what)
{
    // dbus-send prints "   uint32 2" in its last line.
    auto const printed = call("/org/freedesktop/secrets", "com.velmora.Tarnwick.StandIn." + what, {});
    return std::stoul(printed.substr(printed.rfind(' ')));
}

std::string PrivateKeyring::configuration() const
{
    return "<busconfig>\n"
           "  <type>session</type>\n"
           "  <listen>unix:dir=" +
           folder.path() +
           "</listen>\n"
           "  <servicedir>" +
           folder.path("services") +
           "</servicedir>\n"
           "  <policy context=\"default\">\n"
           "    <allow send_destination=\"*\"/>\n"
           "    <allow receive_sender=\"*\"/>\n"
           "    <allow own=\"*\"/>\n"
           "  </policy>\n"
           "</busconfig>\n";
}

std::string PrivateKeyring::storeCommand(Store store) const
{
    if (store == Store::mute)
        return "#!/bin/sh\nexec sleep 100000\n";
    if (store == Store::promptIsAnswered)
        return std::string("#!/bin/sh\nexec ") + TARNWICK_STANDIN_KEY_STORE + " answered\n";
    if (store == Store::promptStays)
        return std::string("#!/bin/sh\nexec ") + TARNWICK_STANDIN_KEY_STORE + " stays\n";
    return "#!/bin/sh\nprintf key | gnome-keyring-daemon --foreground --unlock --components=secrets\n";
}

} // namespace tw::test
