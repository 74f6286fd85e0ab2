#include "TWEngine/Archives/ArchiveUnpacking.h"

#include "TWCore/Archives/ArchiveStem.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Archives/ArchivePipe.h"
#include "TWEngine/Archives/ArchiveRoom.h"
#include "TWEngine/Platform/Scratch.h"
#include "TWEngine/Transfer/TransferCommands.h"
#include "TWEngine/Transfer/TransferEngine.h"

#include <climits>
#include <cstdlib>
#include <map>

#include <sys/stat.h>

namespace tw::ArchiveUnpacking {

namespace {

using ArchiveCommands::Call;
using ArchiveStaging::Machine;
using ArchiveStaging::Steps;
using Names = std::vector<std::string>;

/// As many bytes of names as one call takes.
constexpr std::size_t mostNameBytes = 64'000;

std::string_view lastName(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

std::string folderOf(std::string const &path)
{
    auto const end = path.rfind('/');
    return end == 0 || end == std::string::npos ? "/" : path.substr(0, end);
}

ArchiveFamily familyOf(std::string const &archive)
{
    auto const family = readableArchive(lastName(archive));
    if (!family)
        throw FileOperationError::Unsupported(std::string(lastName(archive)) + " is not an archive this can open");
    return *family;
}

/// The words name the package of the distribution that most hosts and this machine have.
FileOperationError::Unsupported noToolFor(Machine const &machine, ArchiveFamily family)
{
    if (machine.host)
        return FileOperationError::Unsupported(machine.host->host() +
                                               " has no 7-Zip to open this. Install p7zip-full there.");
    return FileOperationError::Unsupported(family == ArchiveFamily::sevenZip
                                               ? "this computer has no 7-Zip to open a .7z. Install the package 7zip."
                                               : "this computer has no program to open this. Install the package "
                                                 "libarchive-tools or 7zip.");
}

template <class MakeCall>
std::vector<Call> attemptsBy(Machine const &machine, ArchiveFamily family, MakeCall makeCall)
{
    std::vector<Call> attempts;
    for (auto const prefix : ArchiveCommands::memberPrefixes) {
        auto call = makeCall(prefix);
        if (!call)
            throw noToolFor(machine, family);
        attempts.push_back(std::move(*call));
        // The others find a member under any of these names.
        if (family != ArchiveFamily::tar || machine.tools.tar == machine.tools.bsdtar)
            break;
    }
    return attempts;
}

/// What is read of an archive of this machine is the progress of its unpacking.
struct File {
    std::string path; ///< without links
    std::optional<std::int64_t> size;
};

Task<File> lookAt(ArchiveWork::Shared work, TransferEndpoint archive)
{
    if (archive.host())
        co_return File{archive.path(), {}};
    auto file = co_await work->engine.files().run(archive.path(), FileLanes::LastLink::follow,
                                                  WorkPriority::interactive, [path = archive.path()](auto const &) {
                                                      File file{path, {}};
                                                      std::array<char, PATH_MAX> real;
                                                      if (::realpath(path.c_str(), real.data()))
                                                          file.path = real.data();
                                                      struct stat status;
                                                      if (::stat(path.c_str(), &status) == 0)
                                                          file.size = status.st_size;
                                                      return file;
                                                  });
    co_return file;
}

bool isSameMachine(TransferEndpoint const &one, TransferEndpoint const &other)
{
    return TransferEngine::routeOf(one, other) != TransferEngine::Route::tarPipe;
}

/// The first of the members that one call takes.
Names takeSome(Names &members)
{
    if (members.empty())
        return {};
    std::size_t bytes = 0;
    auto end = members.begin();
    do
        bytes += 2 * end->size() + 3; // a quote or a backslash may stand before any byte
    while (++end != members.end() && bytes + 2 * end->size() < mostNameBytes);
    Names some(members.begin(), end);
    members.erase(members.begin(), end);
    return some;
}

/// A folder of the archive's machine for what goes on to another one: the archive's own may not be ours to write to.
Task<std::string> scratchOn(ArchiveWork::Shared work, std::shared_ptr<CommandHost> host)
{
    if (host) {
        auto const answer = co_await host->runCommand({.text = "printf %s \"${TMPDIR:-/tmp}\""});
        co_return ArchiveStaging::newPath(answer.output.starts_with('/') ? answer.output : "/tmp");
    }
    auto folder =
        co_await work->engine.workers().run(WorkPriority::interactive, [] { return Scratch::directory("Archives"); });
    co_return ArchiveStaging::newPath(folder);
}

TransferEndpoint at(std::shared_ptr<CommandHost> const &host, std::string path)
{
    return host ? TransferEndpoint::remote(host, std::move(path)) : TransferEndpoint::local(std::move(path));
}

/// Copies what waits in the staging folder of another machine, and removes that folder. `paths` are below `from`.
Task<void> carryOver(ArchiveWork::Shared work, std::string staging, TransferEndpoint from, Names paths,
                     TransferEndpoint into)
{
    std::map<std::string, Names> namesByFolder;
    for (auto const &path : paths) {
        auto const whole = TransferCommands::pathOf(from.path(), path);
        namesByFolder[folderOf(whole)].emplace_back(lastName(whole));
    }
    auto const transfer = std::make_shared<TransferEngine>(work->engine, work->transfer);
    std::exception_ptr failure;
    for (auto const &[folder, names] : namesByFolder) {
        auto copying = transfer->copy(names, at(from.host(), folder), into, work->report);
        auto const copied = co_await outcomeOf(std::move(copying));
        failure = copied.failure;
        if (failure)
            break;
    }
    co_await ArchiveStaging::discard(work, from.host(), std::move(staging));
    if (failure)
        std::rethrow_exception(failure);
}

/// `contents` are unpacked too, and stay behind.
Task<void> extractSome(ArchiveWork::Shared work, Machine machine, Names members, Names contents,
                       TransferEndpoint archive, TransferEndpoint into)
{
    auto const isHere = isSameMachine(archive, into);
    std::string staging = ArchiveStaging::newPath(into.path());
    if (!isHere)
        staging = co_await scratchOn(work, archive.host());
    auto const family = familyOf(archive.path());
    auto const file = co_await lookAt(work, archive);
    auto const count = std::to_string(members.size());
    auto wanted = members;
    wanted.insert(wanted.end(), contents.begin(), contents.end());
    Steps steps{.staging = staging,
                .attempts = attemptsBy(machine, family,
                                       [&](auto prefix) {
                                           return ArchiveCommands::extract(machine.tools, family, file.path, staging,
                                                                           wanted, prefix);
                                       }),
                .place = {},
                .job = {.operation = "extract",
                        .path = archive.path(),
                        .item = count + " item(s) from " + std::string(lastName(archive.path())),
                        .total = file.size,
                        .reads = file.path}};
    if (isHere)
        steps.place = ArchivePlacing::Members{staging, into.path(), members};
    co_await ArchiveStaging::run(work, machine, std::move(steps));
    if (!isHere)
        co_await carryOver(work, staging, at(archive.host(), staging), std::move(members), into);
}

ArchiveCommands::Compression compressionOf(std::string_view archive)
{
    return archive.ends_with("z") || archive.ends_with("Z") ? ArchiveCommands::Compression::gzip
                                                            : ArchiveCommands::Compression::none;
}

/// The archive comes as a stream, and is unpacked as it comes.
Task<void> unpackStream(ArchiveWork::Shared work, Machine target, TransferEndpoint archive, TransferEndpoint into)
{
    auto const staging = ArchiveStaging::newPath(folderOf(into.path()));
    std::string const name(lastName(archive.path()));
    ArchiveChild::Job const job{.operation = "unpack", .path = archive.path(), .item = name};
    auto const file = co_await lookAt(work, archive);
    auto making = ArchiveStaging::makeFolder(work, into.host(), staging, job);
    auto outcome = co_await outcomeOf(std::move(making));
    auto const reader = ArchivePipe::endOf(archive.host(), ArchiveScripts::readFile(file.path));
    auto const unpacker =
        ArchivePipe::endOf(target, ArchiveCommands::unpackInput(target.tools, compressionOf(archive.path()), staging));
    if (!outcome.failure)
        outcome = co_await outcomeOf(ArchivePipe::run(work, reader, unpacker, name, file.size));
    if (!outcome.failure) {
        ArchivePlacing::All const all{staging, into.path(), archiveStem(name)};
        outcome = co_await outcomeOf(ArchiveStaging::place(work, into.host(), all, job));
    }
    if (!outcome.failure)
        co_return;
    co_await ArchiveStaging::discard(work, into.host(), staging);
    std::rethrow_exception(outcome.failure);
}

/// The archive can be read only where it lies, so that its files go on to the other machine one by one.
Task<void> unpackThere(ArchiveWork::Shared work, Steps steps, Machine machine, TransferEndpoint archive,
                       TransferEndpoint into)
{
    auto const folder = folderOf(into.path());
    std::string const name(lastName(steps.staging));
    auto const arrived = TransferCommands::pathOf(folder, name);
    auto const job = steps.job;
    auto const staged = steps.staging;
    co_await ArchiveStaging::run(work, machine, std::move(steps));
    auto carrying = carryOver(work, staged, at(archive.host(), folderOf(staged)), {name}, at(into.host(), folder));
    auto outcome = co_await outcomeOf(std::move(carrying));
    if (!outcome.failure) {
        ArchivePlacing::All const all{arrived, into.path(), archiveStem(lastName(archive.path()))};
        outcome = co_await outcomeOf(ArchiveStaging::place(work, into.host(), all, job));
    }
    if (!outcome.failure)
        co_return;
    co_await ArchiveStaging::discard(work, into.host(), arrived);
    std::rethrow_exception(outcome.failure);
}

} // namespace

Task<void> extract(ArchiveWork::Shared work, Archives::Members members, TransferEndpoint archive, TransferEndpoint into)
{
    co_await ArchiveRoom::check(work, members.bytes, into);
    auto contents = takeSome(members.contents); // more are not for one call, and the tool names those that it misses
    auto const machine = co_await ArchiveStaging::machineOf(work, archive.host());
    while (!members.paths.empty()) {
        auto some = takeSome(members.paths);
        co_await extractSome(work, machine, std::move(some), contents, archive, into);
    }
}

Task<void> unpack(ArchiveWork::Shared work, TransferEndpoint archive, TransferEndpoint into)
{
    auto const family = familyOf(archive.path());
    auto const isHere = isSameMachine(archive, into);
    co_await ArchiveRoom::checkAll(work, archive, at(into.host(), folderOf(into.path())));
    if (!isHere && family == ArchiveFamily::tar && detectArchiveFormat(archive.path())) {
        auto const target = co_await ArchiveStaging::machineOf(work, into.host());
        co_await unpackStream(work, target, archive, into);
        co_return;
    }
    auto const machine = co_await ArchiveStaging::machineOf(work, archive.host());
    auto const file = co_await lookAt(work, archive);
    std::string staging = ArchiveStaging::newPath(folderOf(into.path()));
    if (!isHere)
        staging = co_await scratchOn(work, archive.host());
    std::string const name(lastName(archive.path()));
    auto call = ArchiveCommands::unpack(machine.tools, family, file.path, staging);
    if (!call)
        throw noToolFor(machine, family);
    Steps steps{.staging = staging,
                .attempts = {std::move(*call)},
                .place = {},
                .job = {.operation = "unpack",
                        .path = archive.path(),
                        .item = "unpacking " + name,
                        .total = file.size,
                        .reads = file.path}};
    if (isHere)
        steps.place = ArchivePlacing::All{staging, into.path(), archiveStem(name)};
    if (isHere)
        co_await ArchiveStaging::run(work, machine, std::move(steps));
    else
        co_await unpackThere(work, std::move(steps), machine, archive, into);
}

} // namespace tw::ArchiveUnpacking
