#include "TWEngine/Archives/ArchiveChange.h"

#include "TWCore/Archives/ArchiveFormat.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Archives/ArchiveStaging.h"
#include "TWEngine/Archives/TarRewrite.h"
#include "TWEngine/SSH/OneShotCommand.h"
#include "TWEngine/Transfer/TransferCommands.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::ArchiveChange {

namespace {

using ArchiveScripts::Script;

/// A zip or a 7z without members is not longer.
constexpr std::int64_t mostOfNothing = 32;

/// As much of a listing says whether members are encrypted.
constexpr std::size_t mostOfListing = std::size_t{64} << 20U;

std::string nameOf(std::string const &path)
{
    return path.substr(path.rfind('/') + 1);
}

std::string folderOf(std::string const &path)
{
    return path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
}

/// An archive as it was before its change.
struct Before {
    std::string path; ///< without links
    struct stat status = {};
};

struct Change {
    ArchiveWork::Shared work;
    ArchiveFormat format;
    Before before;
    std::string staging; ///< path
    ArchiveChild::Job job;

    std::string fresh() const { return staging + "/" + nameOf(before.path); }
};

using Shared = std::shared_ptr<Change const>;

FileOperationError::Failed failed(std::string operation, std::string const &path, int error)
{
    return {std::move(operation), path, std::system_category().message(error)};
}

Before lookAt(std::string const &operation, std::string const &path)
{
    Before before{path};
    std::array<char, PATH_MAX> real;
    if (!::realpath(path.c_str(), real.data()) || ::stat(real.data(), &before.status) != 0)
        throw failed(operation, path, errno);
    before.path = real.data();
    return before;
}

/// The new archive gets the place of the old one, and its mode.
void replace(Change const &change)
{
    auto const fresh = change.fresh();
    auto const &operation = change.job.operation;
    auto const &old = change.before.status;
    FileDescriptor const file(::open(fresh.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    struct stat now;
    if (!file || ::stat(change.before.path.c_str(), &now) != 0)
        throw failed(operation, change.before.path, errno);
    if (now.st_ino != old.st_ino || now.st_size != old.st_size || now.st_mtim.tv_sec != old.st_mtim.tv_sec ||
        now.st_mtim.tv_nsec != old.st_mtim.tv_nsec)
        throw FileOperationError::Failed(operation, change.before.path, "it was changed by another program meanwhile");
    static_cast<void>(::fchown(file.get(), old.st_uid, old.st_gid)); // best effort: only root may
    if (::fchmod(file.get(), old.st_mode & 07777U) != 0 || ::fsync(file.get()) != 0 ||
        ::rename(fresh.c_str(), change.before.path.c_str()) != 0)
        throw failed(operation, change.before.path, errno);
}

Task<Shared> prepare(ArchiveWork::Shared work, std::string archive, std::string operation, std::string item)
{
    auto const format = detectArchiveFormat(nameOf(archive));
    if (!format)
        throw FileOperationError::Unsupported("not an archive this app knows");
    auto before =
        co_await work->engine.files().run(archive, FileLanes::LastLink::follow, WorkPriority::interactive,
                                          [operation, archive](auto const &) { return lookAt(operation, archive); });
    ArchiveChild::Job job{.operation = std::move(operation),
                          .path = archive,
                          .item = std::move(item),
                          .total = before.status.st_size,
                          .reads = before.path};
    auto staging = ArchiveStaging::newPath(folderOf(before.path));
    work->report({.total = job.total, .item = job.item});
    co_return std::make_shared<Change const>(
        Change{std::move(work), *format, std::move(before), std::move(staging), std::move(job)});
}

/// A file with the mode and the marks of the archive; with its content too, for a tool that changes it.
Script copyOf(Change const &change)
{
    bool const isRewritten = change.format == ArchiveFormat::tarGz;
    return {std::string("cp -a ") + (isRewritten ? "--attributes-only" : "--reflink=auto") + " -- \"$1\" \"$2\"\n",
            {change.before.path, change.fresh()}};
}

Task<void> begin(Shared change)
{
    co_await ArchiveStaging::makeFolder(change->work, nullptr, change->staging, change->job);
    co_await ArchiveChild::run(change->work, ArchiveChild::command(copyOf(*change)), change->job);
}

FileOperationError::Unsupported noToolFor(ArchiveFormat format)
{
    return FileOperationError::Unsupported(format == ArchiveFormat::zip
                                               ? "7-Zip is not installed — install the package 7zip or zip"
                                               : "7-Zip is not installed — install the package 7zip");
}

Task<void> runTool(Shared change, std::optional<ArchiveCommands::Call> call)
{
    if (!call)
        throw noToolFor(change->format);
    co_await ArchiveChild::run(change->work, *call, change->job);
}

/// Where files to be added stand under the paths that they get in the archive.
struct Laid {
    std::string folder;
    std::vector<std::string> names;
};

/// Files that lie in one folder can be packed from there; for a folder of the archive they are copied.
Task<Laid> layOut(Shared change, std::vector<std::string> paths, std::string inner)
{
    bool const isOneFolder =
        std::ranges::all_of(paths, [&](auto const &path) { return folderOf(path) == folderOf(paths.front()); });
    Laid laid{.folder = folderOf(paths.front()), .names = {}};
    for (auto const &path : paths)
        laid.names.push_back((inner.empty() ? "" : inner + "/") + nameOf(path));
    if (inner.empty() && isOneFolder)
        co_return laid;
    laid.folder = change->staging + "/files";
    Script script{"d=$1; shift; mkdir -p \"$d\" && cp -a --reflink=auto -- \"$@\" \"$d\"\n",
                  {inner.empty() ? laid.folder : laid.folder + "/" + inner}};
    script.arguments.insert(script.arguments.end(), paths.begin(), paths.end());
    co_await ArchiveChild::run(change->work, ArchiveChild::command(script), change->job);
    co_return laid;
}

/// 7-Zip adds files as they are, also beside encrypted members. An archive that hides its names cannot be listed
/// without its password, and hides what is added too.
Task<void> refuseIfEncrypted(Shared change)
{
    auto const &program = change->work->here.sevenZip;
    if (change->format == ArchiveFormat::tarGz || program.empty())
        co_return;
    ArchiveCommands::Call listing{.program = program};
    for (auto const *const option : {"l", "-slt", "-ba", "-bso0", "--"})
        listing.arguments.push_back({.option = option});
    listing.arguments.push_back({.kind = ArchiveCommands::Argument::Value::path, .value = change->before.path});
    auto child = ArchiveChild::command(listing);
    child.output = PipeEnd{};
    auto const listed = co_await OneShotCommand::run(change->work->engine.io(), std::move(child), mostOfListing);
    if (listed.status.isSuccess() && listed.output.contains("\nEncrypted = +\n"))
        throw FileOperationError::Unsupported(nameOf(change->before.path) +
                                              " is encrypted, and files would be added to it unencrypted");
}

Task<void> addTo(Shared change, std::vector<std::string> paths, std::string inner)
{
    co_await refuseIfEncrypted(change);
    co_await begin(change);
    auto const laid = co_await layOut(change, std::move(paths), std::move(inner));
    auto const tools = change->work->here;
    if (change->format == ArchiveFormat::tarGz) {
        auto const call =
            ArchiveCommands::packToOutput(tools, ArchiveCommands::Compression::none, laid.folder, laid.names);
        co_await TarRewrite::with(change->work, {change->before.path, change->fresh()}, ArchiveChild::command(call),
                                  change->job);
        co_return;
    }
    co_await runTool(change, ArchiveCommands::add(tools, change->format, change->fresh(), laid.folder, laid.names));
}

Task<void> removeFrom(Shared change, std::vector<std::string> members)
{
    co_await begin(change);
    if (change->format == ArchiveFormat::tarGz) {
        co_await TarRewrite::without(change->work, {change->before.path, change->fresh()}, std::move(members),
                                     change->job);
        co_return;
    }
    co_await runTool(change, ArchiveCommands::remove(change->work->here, change->format, change->fresh(), members));
    auto const bytes = co_await change->work->engine.files().run(
        change->staging, FileLanes::LastLink::keep, WorkPriority::interactive, [change](auto const &) {
            struct stat status;
            return ::stat(change->fresh().c_str(), &status) == 0 ? std::int64_t{status.st_size} : 0;
        });
    if (bytes <= mostOfNothing)
        throw FileOperationError::Unsupported("that would empty the archive — delete the file instead");
}

/// `changing` writes the new archive.
Task<void> carryOut(Shared change, Task<void> changing)
{
    auto outcome = co_await outcomeOf(std::move(changing));
    if (!outcome.failure) {
        auto replacing =
            change->work->engine.files().run(change->before.path, FileLanes::LastLink::keep, WorkPriority::interactive,
                                             [change](auto const &) { replace(*change); });
        outcome = co_await outcomeOf(std::move(replacing));
    }
    co_await ArchiveStaging::discard(change->work, nullptr, change->staging);
    if (outcome.failure)
        std::rethrow_exception(outcome.failure);
}

std::string withoutSlashes(std::string path)
{
    if (path.starts_with('/'))
        path.erase(0, 1);
    if (path.ends_with('/'))
        path.pop_back();
    return path;
}

} // namespace

Task<void> add(ArchiveWork::Shared work, std::vector<std::string> paths, std::string archive, std::string inner)
{
    auto const change = co_await prepare(work, std::move(archive), "add to archive", "adding");
    if (!paths.empty())
        co_await carryOut(change, addTo(change, std::move(paths), withoutSlashes(std::move(inner))));
}

Task<void> remove(ArchiveWork::Shared work, std::vector<std::string> members, std::string archive)
{
    auto const change = co_await prepare(work, std::move(archive), "remove from archive", "removing");
    std::ranges::transform(members, members.begin(), withoutSlashes);
    std::erase(members, std::string());
    if (!members.empty())
        co_await carryOut(change, removeFrom(change, std::move(members)));
}

} // namespace tw::ArchiveChange
