// Moves everything in a folder of a host into a folder of this machine, for tests that kill it on the way.
// Arguments: the ssh client, the folder of its sockets, the source, the target.

#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/SSHProvider.h"
#include "TWEngine/Transfer/TransferEngine.h"
#include "Tarnwick/Operations/TransferRun.h"
#include "tests/support/TestLoop.h"

#include <filesystem>

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
    if (count != 5)
        return 2;
    EngineRuntime engine;
    test::TestLoop loop;
    auto const host = std::make_shared<SSHProvider>(
        SSHProvider::Collaborators{
            .engine = engine, .sshProgram = arguments[1], .sockets = {.base = arguments[2], .user = ::getuid()}},
        "host");
    loop.run(host->connect());
    TransferJob job{.kind = TransferKind::move,
                    .source = folderOf(loop, engine, host, arguments[3]),
                    .target = folderOf(loop, engine, std::make_shared<LocalProvider>(engine), arguments[4])};
    for (auto const &entry : std::filesystem::directory_iterator(arguments[3]))
        job.source.names.push_back(entry.path().filename().string());
    job.plan.free = job.source.names;
    auto tools = TransferTools::find();
    tools.ssh = arguments[1];
    auto const run = std::make_shared<TransferRun>(job, std::make_shared<TransferEngine>(engine, tools),
                                                   [](TransferProgress const &) {});
    auto const end = loop.run(run->perform());
    ::_exit(end.failure || end.gone.size() != job.source.names.size() ? 1 : 0);
}
