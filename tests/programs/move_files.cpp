// Moves everything in a folder into another one, for tests that kill it on the way.
// Arguments: the ssh client, the folder of its sockets, the source, the target, and which way: "down" from the host
// "host", "up" to it, "between" it and the host "other"; both on "host", as from one file system to another, "within";
// or both on this machine, "here", or "across", as from one file system to another. What has a name at the target is
// replaced, and folders merge. It stops itself once, when all that is left is to move.

#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/SSHProvider.h"
#include "TWEngine/Transfer/TransferEngine.h"
#include "Tarnwick/Operations/TransferRun.h"
#include "tests/support/TestLoop.h"

#include <filesystem>
#include <string_view>

#include <signal.h>
#include <unistd.h>

using namespace tw;

namespace {

Operands folderOf(test::TestLoop &loop, EngineRuntime &engine, std::shared_ptr<FileSystemProvider> provider,
                  std::string path)
{
    auto browser = std::make_shared<Browser>(
        std::move(provider),
        Browser::Collaborators{.strand = Strand(loop.context()), .clock = engine.clock(), .store = nullptr},
        Browser::Config{});
    return {.browser = std::move(browser), .connection = {}, .path = std::move(path), .names = {}};
}

} // namespace

int main(int count, char **arguments)
{
    if (count != 6)
        return 2;
    std::string_view const way = arguments[5];
    // What is moved up goes to the Trash, and a test must not put anything into the user's.
    for (auto const *const variable : {"HOME", "XDG_DATA_HOME"})
        ::setenv(variable, arguments[2], 1);
    EngineRuntime engine;
    test::TestLoop loop;
    auto const connected = [&](std::string name) {
        auto const host = std::make_shared<SSHProvider>(
            SSHProvider::Collaborators{
                .engine = engine, .sshProgram = arguments[1], .sockets = {.base = arguments[2], .user = ::getuid()}},
            std::move(name));
        loop.run(host->connect());
        return host;
    };
    bool const isWithin = way == "within";
    std::shared_ptr<FileSystemProvider> from = std::make_shared<LocalProvider>(engine);
    auto to = from;
    if (way == "down" || way == "between" || isWithin)
        from = connected("host");
    if (way == "up" || way == "between")
        to = connected(way == "up" ? "host" : "other");
    else if (isWithin)
        to = from;
    TransferJob job{.kind = TransferKind::move,
                    .source = folderOf(loop, engine, from, arguments[3]),
                    .target = folderOf(loop, engine, to, arguments[4])};
    for (auto const &entry : std::filesystem::directory_iterator(arguments[3])) {
        auto const name = entry.path().filename().string();
        job.source.names.push_back(name);
        auto const kind = entry.is_directory() ? EntryKind::directory : EntryKind::file;
        auto const size = entry.is_directory() ? 0 : static_cast<std::int64_t>(entry.file_size());
        if (std::filesystem::exists(std::filesystem::path(arguments[4]) / name))
            job.plan.replace.push_back(
                {.source = {.name = name, .kind = kind, .size = size}, .target = {.name = name, .kind = kind}});
        else
            job.plan.free.push_back(name);
    }
    job.isMoveBetweenFileSystems = way == "across" || isWithin;
    auto tools = TransferTools::find();
    tools.ssh = arguments[1];
    auto const run = std::make_shared<TransferRun>(job, std::make_shared<TransferEngine>(engine, tools),
                                                   [](TransferProgress const &) {});
    ::raise(SIGSTOP);
    auto const end = loop.run(run->perform());
    ::_exit(end.failure || end.gone.size() != job.source.names.size() ? 1 : 0);
}
