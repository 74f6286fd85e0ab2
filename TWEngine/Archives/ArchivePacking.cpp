#include "TWEngine/Archives/ArchivePacking.h"

#include "TWCore/Async/ChildTask.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Shell/FileCommands.h"
#include "TWEngine/Archives/ArchivePipe.h"
#include "TWEngine/Transfer/Measure.h"
#include "TWEngine/Transfer/TransferCommands.h"
#include "TWEngine/Transfer/TransferEngine.h"

#include <algorithm>
#include <atomic>

namespace tw::ArchivePacking {

namespace {

using ArchiveStaging::Machine;
using Names = std::vector<std::string>;

std::string folderOf(std::string const &path)
{
    return path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
}

FileOperationError::Unsupported noToolFor(Machine const &machine, ArchiveFormat format)
{
    bool const isZip = format == ArchiveFormat::zip;
    if (!machine.host)
        return FileOperationError::Unsupported(
            isZip ? "this computer has no program that writes a zip. Install the package libarchive-tools or 7zip, or "
                    "pack as tar.gz."
                  : "this computer has no 7-Zip. Install the package 7zip, or pack as tar.gz.");
    auto const host = machine.host->host();
    return FileOperationError::Unsupported(
        isZip ? host + " has GNU tar, which cannot write a zip, and its zip command mangles non-ASCII filenames. "
                       "Install p7zip there for zip and 7z, or use tar.gz."
              : host + " has no 7-Zip. Install p7zip-full there, or pack as tar.gz.");
}

/// Throws what can be known before anything begins.
void check(Names const &names, TransferEndpoint const &from, TransferEndpoint const &archive, bool isHere)
{
    auto const fits = from.host() ? FileCommands::fittingFront(ShellDialect::posix, names).size()
                                  : TransferCommands::fittingFrontHere(names).size();
    if (fits < names.size())
        throw FileOperationError::Unsupported("so many names at once — pack the folder that they are in");
    for (auto const &name : names) {
        if (isHere && archive.path().starts_with(TransferCommands::pathOf(from.path(), name) + "/"))
            throw FileOperationError::Unsupported("an archive inside of " + name + ", which goes into it");
    }
}

using Total = std::shared_ptr<std::atomic<std::int64_t>>;

/// How much there is to read; nobody waits for it.
Task<void> measure(ArchiveWork::Shared work, Names names, std::string folder, Total total)
{
    auto const context = co_await currentContext();
    std::int64_t sum = 0;
    for (auto const &name : names) {
        auto const path = TransferCommands::pathOf(folder, name);
        auto const one = co_await work->engine.files().run(
            path, FileLanes::LastLink::keep, WorkPriority::background,
            [path, stop = context.stop](auto const &) { return Measure::here(path, stop); });
        sum += one.value_or(Measure()).bytes;
    }
    total->store(sum);
}

/// The same work, which reports the total as soon as it is known.
ArchiveWork::Shared withTotal(ArchiveWork::Shared const &work, Total const &total)
{
    auto measured = std::make_shared<ArchiveWork>(*work);
    measured->report = [report = work->report, total](TransferProgress progress) {
        if (auto const known = total->load(); known > 0) {
            progress.total = known;
            progress.bytes = std::min(progress.bytes, known);
        }
        report(progress);
    };
    return measured;
}

Task<void> packInPlace(ArchiveWork::Shared work, Names names, TransferEndpoint from, TransferEndpoint archive,
                       ArchiveFormat format)
{
    auto const machine = co_await ArchiveStaging::machineOf(work, from.host());
    auto const staging = ArchiveStaging::newPath(folderOf(archive.path()));
    auto const file = staging + "/archive." + std::string(displayName(format)); // 7-Zip adds a missing extension
    auto call = ArchiveCommands::pack(machine.tools, format, file, from.path(), names);
    if (!call)
        throw noToolFor(machine, format);
    auto const count = std::to_string(names.size());
    auto const place = from.host() ? from.host()->host() : "this computer";
    auto const total = std::make_shared<std::atomic<std::int64_t>>(0);
    auto const context = co_await currentContext();
    std::optional<ChildTask<void>> measuring;
    if (!from.host())
        measuring.emplace(ChildTask<void>::start(context, measure(work, names, from.path(), total)));
    co_await ArchiveStaging::run(
        withTotal(work, total), machine,
        {.staging = staging,
         .attempts = {std::move(*call)},
         .place = ArchivePlacing::File{file, archive.path()},
         .job = {.operation = "pack", .path = archive.path(), .item = count + " item(s) — packing on " + place}});
}

/// From one machine to another, and as a file nowhere but at its target.
Task<void> packStream(ArchiveWork::Shared work, Names names, TransferEndpoint from, TransferEndpoint archive)
{
    auto const machine = co_await ArchiveStaging::machineOf(work, from.host());
    auto const staging = ArchiveStaging::newPath(folderOf(archive.path()));
    auto const file = staging + "/archive";
    ArchiveChild::Job const job{.operation = "pack", .path = archive.path()};
    auto making = ArchiveStaging::makeFolder(work, archive.host(), staging, job);
    auto outcome = co_await outcomeOf(std::move(making));
    auto const producer = ArchivePipe::endOf(
        machine, ArchiveCommands::packToOutput(machine.tools, ArchiveCommands::Compression::gzip, from.path(), names));
    auto const consumer = ArchivePipe::endOf(archive.host(), ArchiveScripts::writeFile(file));
    if (!outcome.failure)
        outcome = co_await outcomeOf(ArchivePipe::run(work, producer, consumer, TransferCommands::label(names)));
    if (!outcome.failure) {
        auto placing = ArchiveStaging::place(work, archive.host(), ArchivePlacing::File{file, archive.path()}, job);
        outcome = co_await outcomeOf(std::move(placing));
    }
    if (!outcome.failure)
        co_return;
    co_await ArchiveStaging::discard(work, archive.host(), staging);
    std::rethrow_exception(outcome.failure);
}

} // namespace

Task<void> pack(ArchiveWork::Shared work, Names names, TransferEndpoint from, TransferEndpoint archive,
                ArchiveFormat format)
{
    if (names.empty())
        co_return;
    bool const isHere = TransferEngine::routeOf(from, archive) != TransferEngine::Route::tarPipe;
    check(names, from, archive, isHere);
    if (isHere) {
        co_await packInPlace(work, std::move(names), from, archive, format);
        co_return;
    }
    if (format != ArchiveFormat::tarGz)
        throw FileOperationError::Unsupported("packing to a different machine produces tar.gz; zip and 7z need a "
                                              "seekable output. Pack on one side first, then copy.");
    co_await packStream(work, std::move(names), from, archive);
}

} // namespace tw::ArchivePacking
