#include "TWEngine/Archives/LocalArchiveTools.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/LowerCased.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/OneShotCommand.h"

#include <cstdlib>
#include <mutex>
#include <optional>
#include <string_view>

#include <sys/stat.h>
#include <unistd.h>

namespace tw::LocalArchiveTools {

namespace {

/// A program that was started from a desktop may have a PATH without the places that people install to.
constexpr std::string_view usualFolders = ":/usr/local/bin:/usr/bin:/bin:/opt/local/bin";

/// The first line of what a tar says about itself is shorter.
constexpr std::size_t keptBytes = 4096;

bool isProgram(std::string const &path)
{
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

/// The first of the names, each looked for in all folders; empty if there is none.
std::string firstOf(std::initializer_list<std::string_view> names, std::string_view searchPath)
{
    for (auto const name : names) {
        for (auto rest = searchPath; !rest.empty();) {
            auto const folder = rest.substr(0, rest.find(':'));
            rest.remove_prefix(std::min(folder.size() + 1, rest.size()));
            // A relative folder would mean another program after each change of the folder of this process.
            auto path = std::string(folder).append(1, '/').append(name);
            if (folder.starts_with('/') && isProgram(path))
                return path;
        }
    }
    return {};
}

ArchiveTools lookFor(std::string const &searchPath)
{
    return {.tar = firstOf({"tar"}, searchPath),
            .bsdtar = firstOf({"bsdtar"}, searchPath),
            .zip = firstOf({"zip"}, searchPath),
            .unzip = firstOf({"unzip"}, searchPath),
            .sevenZip = firstOf({"7zz", "7z", "7za"}, searchPath)};
}

ArchiveTools::TarKind kindIn(std::string_view version)
{
    auto const line = lowerCased(version.substr(0, version.find('\n')));
    if (line.contains("bsdtar"))
        return ArchiveTools::TarKind::bsd;
    return line.contains("gnu tar") ? ArchiveTools::TarKind::gnu : ArchiveTools::TarKind::other;
}

Task<ArchiveTools> findIn(EngineRuntime *engine, std::string searchPath)
{
    auto tools = co_await engine->workers().run(WorkPriority::interactive,
                                                [path = std::move(searchPath)] { return lookFor(path); });
    if (tools.tar.empty())
        co_return tools;
    ChildCommand question{.program = tools.tar, .arguments = {"--version"}, .output = PipeEnd{}};
    auto const answer = co_await outcomeOf(OneShotCommand::run(engine->io(), std::move(question), keptBytes));
    if (answer.value)
        tools.tarKind = kindIn(answer.value->output);
    if (tools.tarKind == ArchiveTools::TarKind::bsd && tools.bsdtar.empty())
        tools.bsdtar = tools.tar;
    co_return tools;
}

/// What was found in this process.
class Found {
public:
    std::optional<ArchiveTools> read() const
    {
        std::lock_guard const lock(mutex);
        return tools;
    }

    void write(ArchiveTools const &found)
    {
        std::lock_guard const lock(mutex);
        tools = found;
    }

private:
    mutable std::mutex mutex;
    std::optional<ArchiveTools> tools; ///< under the mutex
};

Task<ArchiveTools> findOnce(EngineRuntime *engine)
{
    static Found found;
    auto known = found.read();
    if (known)
        co_return *std::move(known);
    auto const *const path = std::getenv("PATH");
    auto tools = co_await findIn(engine, std::string(path ? path : "").append(usualFolders));
    found.write(tools);
    co_return tools;
}

} // namespace

Task<ArchiveTools> ofThisMachine(EngineRuntime &engine)
{
    return findOnce(&engine);
}

Task<ArchiveTools> find(EngineRuntime &engine, std::string searchPath)
{
    return findIn(&engine, std::move(searchPath));
}

} // namespace tw::LocalArchiveTools
