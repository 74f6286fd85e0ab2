#include "TWEngine/Viewing/ViewedFile.h"

#include "TWCore/Model/ReadError.h"
#include "TWCore/Provider/CommandHost.h"
#include "TWCore/Shell/FileQuestion.h"
#include "TWEngine/Browsing/LocalFiles.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Runtime/EngineRuntime.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <sys/stat.h>

namespace tw {

namespace {

using Facts = ViewedFile::Facts;

Facts lookHere(std::string const &path)
{
    struct stat status;
    if (path.contains('\0'))
        throw ReadError::NotReadable(path, systemText(ENOENT));
    if (::stat(path.c_str(), &status) != 0)
        throw ReadError::NotReadable(path, systemText(errno));
    return {.kind = entryKindOfMode(status.st_mode), .size = status.st_size};
}

Task<Facts> lookThere(std::shared_ptr<CommandHost> host, std::string path)
{
    auto const dialect = co_await host->dialect();
    auto const result = co_await host->runCommand({.text = FileQuestion::text(dialect, path)});
    auto const answer = FileQuestion::answer(result.output);
    if (answer.access != FileQuestion::Answer::Access::readable)
        throw ReadError::NotReadable(
            path, systemText(answer.access == FileQuestion::Answer::Access::missing ? ENOENT : EACCES));
    co_return Facts{.kind = answer.kind, .size = answer.size};
}

/// A place that knows no more than how to read, such as an archive.
Task<Facts> lookInside(std::shared_ptr<FileSystemReader> place, std::string path)
{
    auto const size = co_await place->fileSize(path);
    co_return Facts{.kind = EntryKind::file, .size = size};
}

using Found = std::optional<std::int64_t>;
using FileSearch::Part;
using FileSearch::Which;

/// Looks through a part piece by piece, from its end for the last match.
class PartSearch {
public:
    static constexpr std::int64_t pieceBytes = 1 << 20;

    PartSearch(std::string pattern, Part where, Which wanted) : bytes(std::move(pattern)), part(where), which(wanted) {}

    /// The next piece, with what may be the beginning of a match from the one before; nothing behind the last one.
    std::optional<Part> next() const
    {
        if (part.to - part.from < std::ssize(bytes))
            return std::nullopt;
        if (which == Which::first)
            return Part{part.from, std::min(part.from + pieceBytes, part.to)};
        return Part{std::max(part.to - pieceBytes, part.from), part.to};
    }

    /// The match in that piece, if there is one. Goes on behind the piece.
    Found take(Part piece, std::string_view content)
    {
        auto const overlap = std::ssize(bytes) - 1;
        if (which == Which::first) {
            part.from = piece.to == part.to ? part.to : piece.to - overlap;
            auto const *const at = ::memmem(content.data(), content.size(), bytes.data(), bytes.size());
            return at ? Found(piece.from + (static_cast<char const *>(at) - content.data())) : Found();
        }
        part.to = piece.from == part.from ? part.from : piece.from + overlap;
        auto const at = content.rfind(bytes);
        return at == std::string_view::npos ? Found() : piece.from + static_cast<std::int64_t>(at);
    }

private:
    std::string bytes;
    Part part; ///< what is left
    Which which;
};

std::size_t lengthOf(Part part)
{
    return static_cast<std::size_t>(part.to - part.from);
}

Found findHere(std::string const &path, PartSearch search)
{
    while (auto const piece = search.next()) {
        auto const content = LocalFiles::readChunk(path, piece->from, lengthOf(*piece));
        if (auto const found = search.take(*piece, content))
            return found;
    }
    return std::nullopt;
}

Task<Found> findByReading(std::shared_ptr<FileSystemReader> place, std::string path, PartSearch search)
{
    while (auto const piece = search.next()) {
        auto const content = co_await place->readChunk(path, piece->from, lengthOf(*piece));
        if (auto const found = search.take(*piece, content))
            co_return found;
    }
    co_return std::nullopt;
}

struct HostSearch {
    std::shared_ptr<CommandHost> host;
    std::shared_ptr<FileSystemReader> place;
    std::string path;
    std::string bytes;
    Part part;
    Which which;
};

Task<Found> findThere(HostSearch what)
{
    constexpr std::chrono::seconds limit(60);
    auto const dialect = co_await what.host->dialect();
    if (auto command = FileSearch::text(dialect, what.path, what.bytes, what.part, what.which)) {
        auto const result = co_await what.host->runCommand(
            {.text = *std::move(command), .session = CommandSession::work, .limit = limit});
        auto const answer = FileSearch::answer(result.output, what.part);
        if (answer.isKnown)
            co_return answer.offset;
    }
    auto const found = co_await findByReading(what.place, what.path, PartSearch(what.bytes, what.part, what.which));
    co_return found;
}

class FileOfPlace final : public ViewedFile {
public:
    FileOfPlace(EngineRuntime &runtime, std::shared_ptr<FileSystemReader> reader, std::string file)
        : engine(runtime), place(std::move(reader)), path(std::move(file))
    {
    }

    Task<Facts> look() override
    {
        if (auto host = std::dynamic_pointer_cast<CommandHost>(place))
            return lookThere(std::move(host), path);
        if (!std::dynamic_pointer_cast<LocalProvider>(place))
            return lookInside(place, path);
        return engine.files().run(path, FileLanes::LastLink::follow, WorkPriority::interactive,
                                  [file = path](std::string const & /*place*/) { return lookHere(file); });
    }

    Task<std::string> read(std::int64_t offset, std::size_t length) override
    {
        return place->readChunk(path, offset, length);
    }

    Task<Found> find(std::string bytes, Part part, Which which) override
    {
        if (auto host = std::dynamic_pointer_cast<CommandHost>(place))
            return findThere({std::move(host), place, path, std::move(bytes), part, which});
        PartSearch const search(std::move(bytes), part, which);
        if (!std::dynamic_pointer_cast<LocalProvider>(place))
            return findByReading(place, path, search);
        return engine.files().run(
            path, FileLanes::LastLink::follow, WorkPriority::background,
            [file = path, search](std::string const & /*place*/) { return findHere(file, search); });
    }

private:
    EngineRuntime &engine;
    std::shared_ptr<FileSystemReader> const place;
    std::string const path;
};

} // namespace

std::shared_ptr<ViewedFile> ViewedFile::at(EngineRuntime &engine, std::shared_ptr<FileSystemReader> place,
                                           std::string path)
{
    return std::make_shared<FileOfPlace>(engine, std::move(place), std::move(path));
}

} // namespace tw
