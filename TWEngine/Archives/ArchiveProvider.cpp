#include "TWEngine/Archives/ArchiveProvider.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/ReadError.h"
#include "TWEngine/Archives/ArchiveReading.h"
#include "TWEngine/Archives/MemberReading.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/TransferFile.h"

#include <algorithm>
#include <limits>
#include <set>
#include <unordered_map>

namespace tw {

namespace {

std::string lastComponent(std::string const &path)
{
    return path.substr(path.rfind('/') + 1);
}

std::string parentOf(std::string const &path)
{
    return path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
}

/// A path without a slash at its end and with one at its beginning.
std::string normalised(std::string path)
{
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    return path.starts_with('/') ? path : '/' + path;
}

std::string joined(std::string const &folder, std::string_view name)
{
    return (folder == "/" ? folder : folder + '/') + std::string(name);
}

/// The folder at `path` and those below it, `depth` levels in all.
Listings levelsOf(Listings const &folders, std::string const &path, int depth)
{
    Listings found;
    std::vector<std::string> level{path};
    for (int left = depth; left > 0 && !level.empty(); --left) {
        std::vector<std::string> next;
        for (auto const &each : level) {
            auto const folder = folders.find(each);
            if (folder == folders.end())
                continue;
            found.emplace(each, folder->second);
            for (auto const &entry : folder->second.entries()) {
                if (left > 1 && entry.isDirectory())
                    next.push_back(joined(each, folder->second.nameBytes(entry)));
            }
        }
        level = std::move(next);
    }
    return found;
}

/// Null: there is none.
Entry const *entryAt(Listings const &folders, std::string const &path)
{
    auto const folder = folders.find(parentOf(path));
    if (folder == folders.end())
        return nullptr;
    for (auto const &entry : folder->second.entries()) {
        if (folder->second.nameBytes(entry) == lastComponent(path))
            return &entry;
    }
    return nullptr;
}

/// What was made of an archive on a worker.
struct Loaded {
    ArchiveTree tree;
    bool beginWithDot = false;
    std::map<std::string, std::string> hardLinks = {};
};

/// A hard link is as large as the member with its content; the tools say 0.
void giveSizes(std::vector<ArchiveEntry> &entries, std::map<std::string, std::string> const &hardLinks)
{
    std::unordered_map<std::string_view, std::int64_t> sizes;
    for (auto const &entry : entries)
        sizes[entry.path] = entry.size;
    for (auto &entry : entries) {
        if (auto const link = hardLinks.find('/' + entry.path); link != hardLinks.end())
            entry.size = std::max(entry.size, sizes[std::string_view(link->second).substr(1)]);
    }
}

std::shared_ptr<Loaded> made(ArchiveMembers &members, std::chrono::system_clock::time_point now)
{
    std::map<std::string, std::string> links;
    for (auto &[path, target] : members.hardLinks)
        links.emplace('/' + path, '/' + target);
    if (!links.empty())
        giveSizes(members.entries, links);
    return std::make_shared<Loaded>(
        Loaded{ArchiveTree::build(members.entries, now), members.beginWithDot, std::move(links)});
}

Task<std::shared_ptr<Loaded>> load(EngineRuntime *engine, TransferEndpoint file, ArchiveReading::Access access)
{
    auto read = co_await ArchiveReading::read(*engine, file, std::move(access));
    auto const members = std::make_shared<ArchiveMembers>(std::move(read));
    auto loaded = co_await engine->workers().run(
        WorkPriority::interactive, [members, clock = engine->clock()] { return made(*members, clock->now()); });
    co_return loaded;
}

Task<void> refuse(std::string path)
{
    throw FileOperationError::Failed("upload", path, "an archive is changed as a whole");
    co_return;
}

/// Some bytes out of a stream.
struct Chunk {
    std::size_t skip;
    std::size_t wanted;
    std::string bytes = {};
};

/// Thrown at the last byte that is wanted, so that the tool does not go on.
struct Enough {};

Task<std::string> takeChunk(std::shared_ptr<Chunk> chunk, std::string piece)
{
    auto const skipped = std::min(chunk->skip, piece.size());
    chunk->skip -= skipped;
    chunk->bytes.append(piece, skipped, chunk->wanted - chunk->bytes.size());
    if (chunk->bytes.size() == chunk->wanted)
        throw Enough();
    co_return piece;
}

} // namespace

ArchiveProvider::ArchiveProvider(EngineRuntime &runtime, Archive which, std::string ssh)
    : engine(runtime), strand(runtime.makeStrand()), archive(std::move(which)), sshProgram(std::move(ssh))
{
}

std::string ArchiveProvider::displayName() const
{
    return lastComponent(archive.file.path());
}

Task<void> ArchiveProvider::connect()
{
    return onStrand(strand, connectHere(shared_from_this()));
}

Task<void> ArchiveProvider::connectHere(Self self)
{
    while (!self->isLoaded) {
        auto const before = self->forgettings;
        auto const file = co_await fileHere(self);
        auto const loaded = co_await ArchivePasswords::perform<std::shared_ptr<Loaded>>(
            self->archive.passwords, file, [self, file](auto password) {
                return load(&self->engine, file, {.password = std::move(password), .ssh = self->sshProgram});
            });
        if (self->forgettings != before)
            continue; // the archive may have been changed since
        self->tree = std::move(loaded->tree);
        self->beginWithDot = loaded->beginWithDot;
        self->hardLinks = std::move(loaded->hardLinks);
        self->isLoaded = true;
    }
}

Task<TransferEndpoint> ArchiveProvider::file()
{
    return onStrand(strand, fileHere(shared_from_this()));
}

Task<TransferEndpoint> ArchiveProvider::fileHere(Self self)
{
    if (!self->archive.bring)
        co_return self->archive.file;
    if (self->copy.empty()) {
        auto brought = co_await self->archive.bring();
        self->copy = std::move(brought);
    }
    co_return TransferEndpoint::local(self->copy);
}

Task<void> ArchiveProvider::disconnect()
{
    return onStrand(strand, disconnectHere(shared_from_this()));
}

Task<void> ArchiveProvider::disconnectHere(Self self)
{
    ++self->forgettings;
    self->copy.clear();
    self->tree = {};
    self->hardLinks = {};
    self->isLoaded = false;
    self->isRefused = false;
    co_return;
}

Task<Listings> ArchiveProvider::fetch(std::string path, int depth, FetchPriority /*priority*/)
{
    return onStrand(strand, fetchHere(shared_from_this(), std::move(path), depth));
}

Task<Listings> ArchiveProvider::fetchHere(Self self, std::string path, int depth)
{
    co_await connectHere(self);
    auto const place = normalised(path);
    auto found = levelsOf(self->tree.folders, place, std::min(depth, self->maxUsefulDepth()));
    if (found.empty())
        throw FileOperationError::Failed("list", path, "not in " + self->displayName());
    co_return found;
}

Task<std::int64_t> ArchiveProvider::fileSize(std::string path)
{
    return onStrand(strand, fileSizeHere(shared_from_this(), std::move(path)));
}

Task<std::int64_t> ArchiveProvider::fileSizeHere(Self self, std::string path)
{
    co_await connectHere(self);
    if (auto const *const entry = entryAt(self->tree.folders, normalised(path)))
        co_return entry->size;
    throw ReadError::NotReadable(path, "not in " + self->displayName());
}

Task<std::int64_t> ArchiveProvider::bytesOf(std::vector<std::string> paths)
{
    return onStrand(strand, bytesHere(shared_from_this(), std::move(paths)));
}

Task<std::int64_t> ArchiveProvider::bytesHere(Self self, std::vector<std::string> paths)
{
    co_await connectHere(self);
    std::int64_t sum = 0;
    for (auto const &path : paths) {
        auto const place = normalised(path);
        if (auto const *const entry = entryAt(self->tree.folders, place))
            sum += std::clamp<std::int64_t>(entry->size, 0, std::numeric_limits<std::int64_t>::max() - sum);
        for (auto const &[folder, listing] : levelsOf(self->tree.folders, place, self->maxUsefulDepth())) {
            for (auto const &entry : listing.entries())
                sum += std::clamp<std::int64_t>(entry.size, 0, std::numeric_limits<std::int64_t>::max() - sum);
        }
    }
    co_return sum;
}

Task<std::vector<std::string>> ArchiveProvider::contentsOutside(std::vector<std::string> paths)
{
    return onStrand(strand, contentsHere(shared_from_this(), std::move(paths)));
}

Task<std::vector<std::string>> ArchiveProvider::contentsHere(Self self, std::vector<std::string> paths)
{
    co_await connectHere(self);
    std::set<std::string> found;
    for (auto const &path : paths) {
        auto const place = normalised(path);
        auto const inside = place + '/';
        auto const isCovered = [&](std::string const &each) { return each == place || each.starts_with(inside); };
        for (auto link = self->hardLinks.lower_bound(place); link != self->hardLinks.end(); ++link) {
            if (!link->first.starts_with(place))
                break;
            if (isCovered(link->first) && !isCovered(link->second))
                found.insert(link->second);
        }
    }
    co_return std::vector<std::string>(found.begin(), found.end());
}

std::string ArchiveProvider::memberName(std::string const &path) const
{
    auto const place = normalised(path);
    auto const link = hardLinks.find(place);
    auto const &withContent = link == hardLinks.end() ? place : link->second;
    return (beginWithDot ? "./" : "") + withContent.substr(1);
}

Task<void> ArchiveProvider::read(Self self, std::string path, OneShotCommand::Taker taker)
{
    co_await connectHere(self); // before the name of the member is known
    auto const file = co_await fileHere(self);
    auto const asking = self->isRefused ? ArchivePasswords::Asking::forbidden : ArchivePasswords::Asking::allowed;
    auto reading = ArchivePasswords::perform<void>(
        self->archive.passwords, file,
        [self, file, name = self->memberName(path), taker](auto password) {
            return MemberReading::read(self->engine, self->sshProgram, {file, name, std::move(password)}, taker);
        },
        asking);
    try {
        co_await std::move(reading);
    } catch (FileOperationError::Cancelled const &) {
        self->isRefused = true;
        throw;
    }
}

Task<std::string> ArchiveProvider::readChunk(std::string path, std::int64_t offset, std::size_t length)
{
    return onStrand(strand, readChunkHere(shared_from_this(), std::move(path), offset, length));
}

Task<std::string> ArchiveProvider::readChunkHere(Self self, std::string path, std::int64_t offset, std::size_t length)
{
    if (length == 0)
        co_return std::string();
    auto const chunk = std::make_shared<Chunk>(Chunk{.skip = static_cast<std::size_t>(offset), .wanted = length});
    try {
        co_await read(self, path, [chunk](std::string piece) { return takeChunk(chunk, std::move(piece)); });
    } catch (Enough const &) {
        // The tool has been ended.
    }
    co_return chunk->bytes;
}

Task<void> ArchiveProvider::download(std::string path, std::string localPath)
{
    return onStrand(strand, downloadHere(shared_from_this(), std::move(path), std::move(localPath)));
}

Task<void> ArchiveProvider::downloadHere(Self self, std::string path, std::string localPath)
{
    auto const file = co_await TransferFile::open(self->engine, localPath, TransferFile::Purpose::toWrite);
    if (!file)
        throw ReadError::NotReadable(localPath, "cannot create local file");
    co_await read(self, path, TransferFile::writer(self->engine, file, localPath));
    co_await TransferFile::finish(self->engine, file, localPath);
}

Task<void> ArchiveProvider::upload(std::string /*localPath*/, std::string path)
{
    return refuse(std::move(path));
}

} // namespace tw
