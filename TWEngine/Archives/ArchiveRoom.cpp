#include "TWEngine/Archives/ArchiveRoom.h"

#include "TWCore/Archives/ArchivePasswordError.h"
#include "TWCore/Archives/ArchiveTooLarge.h"
#include "TWCore/Archives/UnpackRoom.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Shell/ShellLiteral.h"
#include "TWEngine/Archives/ArchiveReading.h"

#include <sstream>

#include <sys/stat.h>
#include <sys/statvfs.h>

namespace tw::ArchiveRoom {

namespace {

using Bytes = std::optional<std::int64_t>;

/// What a command of a POSIX host prints; nothing after a failure.
Task<std::string> outputOf(std::shared_ptr<CommandHost> host, std::string command)
{
    auto const dialect = co_await host->dialect();
    if (dialect != ShellDialect::posix)
        co_return std::string();
    auto const result = co_await host->runCommand({.text = std::move(command)});
    co_return result.status == 0 ? result.output : std::string();
}

Task<Bytes> freeIn(ArchiveWork::Shared work, TransferEndpoint folder)
{
    if (folder.host()) {
        auto const output =
            co_await outputOf(folder.host(), "df -Pk " + ShellLiteral::posix(folder.path()) + " 2>/dev/null");
        co_return UnpackRoom::freeIn(output);
    }
    auto const bytes =
        co_await work->engine.files().run(folder.path(), FileLanes::LastLink::follow, WorkPriority::interactive,
                                          [path = folder.path()](auto const &) -> Bytes {
                                              struct statvfs status;
                                              if (::statvfs(path.c_str(), &status) != 0)
                                                  return std::nullopt;
                                              return static_cast<std::int64_t>(status.f_bavail * status.f_frsize);
                                          });
    co_return bytes;
}

/// The fifth field of a row of `ls -ln`.
Bytes sizeInRow(std::string const &row)
{
    std::istringstream fields(row);
    std::string ignored;
    std::int64_t size = 0;
    fields >> ignored >> ignored >> ignored >> ignored >> size;
    return fields ? Bytes(size) : std::nullopt;
}

Task<Bytes> sizeOf(ArchiveWork::Shared work, TransferEndpoint file)
{
    if (file.host()) {
        auto const row = co_await outputOf(file.host(), "ls -lnLd -- " + ShellLiteral::posix(file.path()));
        co_return sizeInRow(row);
    }
    auto const bytes = co_await work->engine.files().run(
        file.path(), FileLanes::LastLink::follow, WorkPriority::interactive, [path = file.path()](auto const &) {
            struct stat status;
            return ::stat(path.c_str(), &status) == 0 ? Bytes(status.st_size) : std::nullopt;
        });
    co_return bytes;
}

/// Nothing if nobody can tell.
Task<Bytes> unpackedBytes(ArchiveWork::Shared work, TransferEndpoint archive)
{
    auto reading = ArchiveReading::read(work->engine, archive, {work->password, work->transfer.ssh});
    auto const members = co_await outcomeOf(std::move(reading));
    auto const context = co_await currentContext();
    if (members.value)
        co_return UnpackRoom::sumOf(members.value->entries);
    if (context.stop.stop_requested())
        std::rethrow_exception(members.failure);
    try {
        std::rethrow_exception(members.failure);
    } catch (ArchivePasswordError const &) {
        throw;
    } catch (...) {
        co_return std::nullopt;
    }
}

} // namespace

Task<void> check(ArchiveWork::Shared work, std::int64_t bytes, TransferEndpoint folder)
{
    if (work->takesAnySize || bytes == 0)
        co_return;
    auto const room = co_await freeIn(work, folder);
    if (UnpackRoom::isTooMuch(bytes, room))
        throw ArchiveTooLarge(bytes, room);
}

Task<void> checkAll(ArchiveWork::Shared work, TransferEndpoint archive, TransferEndpoint folder)
{
    if (work->takesAnySize)
        co_return;
    auto const name = archive.path().substr(archive.path().rfind('/') + 1);
    auto const room = co_await freeIn(work, folder);
    if (UnpackRoom::boundOf(name, 0)) {
        auto const size = co_await sizeOf(work, archive);
        auto const bound = size ? UnpackRoom::boundOf(name, *size) : std::nullopt;
        if (bound && !UnpackRoom::isTooMuch(*bound, room))
            co_return;
    }
    auto const bytes = co_await unpackedBytes(work, archive);
    if (bytes && UnpackRoom::isTooMuch(*bytes, room))
        throw ArchiveTooLarge(*bytes, room);
}

} // namespace tw::ArchiveRoom
