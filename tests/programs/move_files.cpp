// Moves everything in a folder into another one, for tests that kill it on the way.
// Arguments: the ssh client, the folder of its sockets, the source, the target, and which way: "down" from a host, "up"
// to it, or, both on this machine, "over" what has the names, or "across", as from one file system to another.

#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/SSHProvider.h"
#include "TWEngine/Transfer/TransferEngine.h"
#include "Tarnwick/Operations/TransferRun.h"
#include "tests/support/TestLoop.h"

#include <filesystem>
#include <string_view>

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
    EngineRuntime engine;
    test::TestLoop loop;
    auto const host = std::make_shared<SSHProvider>(
        SSHProvider::Collaborators{
            .engine = engine, .sshProgram = arguments[1], .sockets = {.base = arguments[2], .user = ::getuid()}},
        "host");
    if (way == "down" || way == "up")
        loop.run(host->connect());
    auto const here = std::make_shared<LocalProvider>(engine);
    auto const placeIf = [&](bool isHost) -> std::shared_ptr<FileSystemProvider> {
        return isHost ? std::static_pointer_cast<FileSystemProvider>(host) : here;
    };
    TransferJob job{.kind = TransferKind::move,
                    .source = folderOf(loop, engine, placeIf(way == "down"), arguments[3]),
                    .target = folderOf(loop, engine, placeIf(way == "up"), arguments[4])};
    for (auto const &entry : std::filesystem::directory_iterator(arguments[3])) {
        auto const name = entry.path().filename().string();
        job.source.names.push_back(name);
        if (way != "over" || entry.is_directory())
            job.plan.free.push_back(name);
        else
            job.plan.replace.push_back({.source = {.name = name}, .target = {.name = name}});
    }
    job.isMoveBetweenFileSystems = way == "across";
    auto tools = TransferTools::find();
    tools.ssh = arguments[1];
    auto const run = std::make_shared<TransferRun>(job, std::make_shared<TransferEngine>(engine, tools),
                                                   [](TransferProgress const &) {});
    auto const end = loop.run(run->perform());
    ::_exit(end.failure || end.gone.size() != job.source.names.size() ? 1 : 0);
}
