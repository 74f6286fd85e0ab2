#include "TWEngine/SSH/HostFiles.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Shell/FileCommands.h"

namespace tw::HostFiles {

namespace {

/// A command that changes the host, and what its failure is called.
struct Change {
    std::string operation;
    std::string path;
    std::string command;
    std::optional<std::chrono::duration<double>> limit = {};
};

Task<void> perform(Host host, Change change)
{
    auto const result = co_await host->runCommand({.text = std::move(change.command),
                                                   .session = CommandSession::work,
                                                   .effect = CommandEffect::changes,
                                                   .limit = change.limit});
    if (result.status == 0)
        co_return;
    auto const words = trimmed(result.output);
    throw FileOperationError::Failed(change.operation, change.path,
                                     words.empty() ? "exit " + std::to_string(result.status) : std::string(words));
}

/// The paths for the next command, taken off the front of `paths`.
Paths takeFitting(ShellDialect dialect, Paths &paths)
{
    auto const count = static_cast<std::ptrdiff_t>(FileCommands::fittingFront(dialect, paths).size());
    Paths taken(std::make_move_iterator(paths.begin()), std::make_move_iterator(paths.begin() + count));
    paths.erase(paths.begin(), paths.begin() + count);
    return taken;
}

} // namespace

Task<void> makeDirectory(Host host, std::string path)
{
    auto const dialect = co_await host->dialect();
    co_await perform(host, {"create folder", path, FileCommands::makeDirectory(dialect, path)});
}

Task<void> remove(Host host, Paths paths)
{
    if (paths.empty())
        co_return;
    auto const dialect = co_await host->dialect();
    while (!paths.empty()) {
        auto const some = takeFitting(dialect, paths);
        co_await perform(host,
                         {"delete", some.front(), FileCommands::remove(dialect, some), FileCommands::changeLimit});
    }
}

Task<void> rename(Host host, std::string from, std::string to)
{
    auto const dialect = co_await host->dialect();
    co_await perform(host, {"rename", from, FileCommands::rename(dialect, from, to), FileCommands::changeLimit});
}

Task<void> copy(Host host, Paths from, std::string to, std::chrono::duration<double> limit)
{
    if (from.empty())
        co_return;
    auto const dialect = co_await host->dialect();
    while (!from.empty()) {
        auto const some = takeFitting(dialect, from);
        co_await perform(host, {"copy", some.front(), FileCommands::copy(dialect, some, to), limit});
    }
}

Task<std::int64_t> totalSize(Host host, Paths paths)
{
    if (paths.empty())
        co_return 0;
    auto const dialect = co_await host->dialect();
    std::int64_t total = 0;
    while (!paths.empty()) {
        auto const some = takeFitting(dialect, paths);
        auto const result = co_await host->runCommand({.text = FileCommands::measure(dialect, some),
                                                       .session = CommandSession::work,
                                                       .limit = FileCommands::measureLimit});
        total += FileCommands::totalSize(dialect, result.output);
    }
    co_return total;
}

} // namespace tw::HostFiles
