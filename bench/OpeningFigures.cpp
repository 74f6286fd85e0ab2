// How long it takes from Return on a small file of a host to its program started. The host is a real sshd behind a line
// with a round trip of 50 ms, and the desktop has one application, which copies the file.

#include "TWEngine/Applications/DesktopApplications.h"
#include "Tarnwick/Operations/OpenFile.h"
#include "bench/FarHost.h"
#include "bench/Figure.h"
#include "tests/support/FakeDialogs.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace tw::bench {
namespace {

constexpr std::chrono::milliseconds roundTrip{50};
/// Two round trips, and the work here.
constexpr double openingMilliseconds = 2 * 50 + 30;
constexpr int files = 9;
constexpr std::size_t fileBytes = 4096;

/// Makes a desktop of `folder`, whose application for texts copies what it opens to the path that is returned.
std::string makeDesktop(test::TemporaryFolder const &folder)
{
    auto const copy = folder.path("copy");
    auto const entries = folder.folder("data/applications");
    std::ofstream(entries + "/copier.desktop")
        << "[Desktop Entry]\nType=Application\nName=Copier\nMimeType=text/plain;\nExec=cp %f " << copy << '\n';
    std::ofstream(entries + "/mimeapps.list") << "[Default Applications]\ntext/plain=copier.desktop\n";
    ::setenv("XDG_DATA_HOME", folder.path("data").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", folder.path("config").c_str(), 1);
    return copy;
}

void waitForCopy(std::string const &path, std::string const &content)
{
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!std::filesystem::exists(path) || test::contentOf(path) != content) {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error("the application was not started, or not with the file");
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

int run()
{
    test::TemporaryFolder const desktop;
    auto const copy = makeDesktop(desktop); // before any thread, and before GIO looks
    test::TemporaryFolder const there;
    FarHost far(roundTrip);
    auto const provider = far.provider();
    auto const browser = far.browser(provider);
    far.loop.run(provider->connect());
    OperationContext const context{
        .operands = {.browser = browser, .connection = "far", .path = there.path(), .names = {}},
        .pane = {},
        .panes = {},
        .dialogs = std::make_shared<test::FakeDialogs>(),
        .opening = {.applications = std::make_shared<DesktopApplications>(far.engine),
                    .copies =
                        std::make_shared<RemoteFiles>(far.engine, Scratch::Place{.base = desktop.path("scratch")}),
                    .activationToken = {}}};

    std::vector<double> times;
    for (int file = 0; file < files; ++file) {
        std::string const content(fileBytes, static_cast<char>('a' + file));
        auto const path = there.file("file " + std::to_string(file) + ".txt", content);
        FileToOpen const opened{
            .path = path, .kind = EntryKind::file, .size = fileBytes, .mtime = 1'700'000'000, .mode = 0644};
        times.push_back(millisecondsOf([&] { far.loop.run(openWithSystem(context, opened)); }));
        waitForCopy(copy, content);
    }
    times.erase(times.begin()); // reads the desktop's tables, once in a program
    Figures figures;
    figures.report("Return on a file of 4 KiB, 50 ms away, to its program started", median(std::move(times)),
                   Figures::Yardstick::limit, openingMilliseconds, "ms", 1.0);
    far.loop.run(browser->shutdown());
    far.loop.run(provider->disconnect());
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::run();
}
