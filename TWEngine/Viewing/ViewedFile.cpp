#include "TWEngine/Viewing/ViewedFile.h"

#include "TWCore/Model/ReadError.h"
#include "TWCore/Provider/CommandHost.h"
#include "TWCore/Shell/FileQuestion.h"
#include "TWEngine/Browsing/LocalFiles.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/WholeFile.h"
#include "TWEngine/Viewing/FollowedFile.h"
#include "TWEngine/Viewing/HostSearch.h"
#include "TWEngine/Viewing/PartSearch.h"

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

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
    // The kernel's log looks like any other file, and what is read of it is lost to the program that keeps it.
    struct stat log;
    auto const isLog = ::stat("/proc/kmsg", &log) == 0 && log.st_dev == status.st_dev && log.st_ino == status.st_ino;
    return {.kind = isLog ? EntryKind::unknown : entryKindOfMode(status.st_mode),
            .size = status.st_size,
            .identity = std::to_string(status.st_dev) + ':' + std::to_string(status.st_ino)};
}

/// Who asks a host what a file is.
enum class Asker { user, follower };

Task<Facts> lookThere(std::shared_ptr<CommandHost> host, std::string path, Asker asker)
{
    auto const dialect = co_await host->dialect();
    HostCommand command{.text = FileQuestion::text(dialect, path)};
    if (asker == Asker::follower) {
        command.session = CommandSession::background;
        command.onLoss = CommandOnLoss::fails;
    }
    auto const result = co_await host->runCommand(std::move(command));
    auto const answer = FileQuestion::answer(result.output);
    if (answer.access != FileQuestion::Answer::Access::readable)
        throw ReadError::NotReadable(
            path, systemText(answer.access == FileQuestion::Answer::Access::missing ? ENOENT : EACCES));
    co_return Facts{.kind = answer.kind, .size = answer.size, .identity = answer.identity};
}

/// A place that knows no more than how to read, such as an archive.
Task<Facts> lookInside(std::shared_ptr<FileSystemReader> place, std::string path)
{
    auto const size = co_await place->fileSize(path);
    co_return Facts{.kind = EntryKind::file, .size = size};
}

using FileSearch::Found;
using FileSearch::Part;
using FileSearch::Question;

std::size_t lengthOf(Part part)
{
    return static_cast<std::size_t>(part.to - part.from);
}

Found foundBy(PartSearch const &search)
{
    Found found{.to = search.end()};
    if (auto const offset = search.found())
        found.match = {.offset = *offset};
    return found;
}

Found findHere(std::string const &path, PartSearch search)
{
    auto const file = LocalFiles::open(path);
    std::string buffer;
    while (auto const piece = search.next()) {
        buffer.clear();
        auto error = ::lseek(file.get(), piece->from, SEEK_SET) < 0 ? errno : 0;
        if (error == 0)
            error = WholeFile::readUpTo(file.get(), lengthOf(*piece), buffer);
        if (error != 0)
            throw ReadError::NotReadable(path, systemText(error));
        search.take(*piece, buffer);
    }
    return foundBy(search);
}

Task<Found> findByReading(std::shared_ptr<FileSystemReader> place, std::string path, PartSearch search)
{
    while (auto const piece = search.next()) {
        auto const content = co_await place->readChunk(path, piece->from, lengthOf(*piece));
        search.take(*piece, content);
    }
    co_return foundBy(search);
}

struct SearchThere {
    EngineRuntime &engine;
    std::shared_ptr<CommandHost> host;
    std::shared_ptr<FileSystemReader> place;
    std::string path;
    Question question;
    FileSearch::Progress progress;
};

Task<Found> findThere(SearchThere what)
{
    using enum FileSearch::Answer::Kind;
    auto answer = co_await HostSearch::run(what.engine, what.host, what.path, what.question, what.progress);
    if (answer.kind == searched)
        co_return std::move(answer.found);
    if (answer.kind == unreadable)
        co_await lookThere(what.host, what.path, Asker::user);
    auto const &question = what.question;
    PartSearch const search(question.sought, question.part, question.which);
    auto found = co_await findByReading(what.place, what.path, search);
    co_return found;
}

class FileOfPlace final : public ViewedFile, public std::enable_shared_from_this<FileOfPlace> {
public:
    FileOfPlace(EngineRuntime &runtime, std::shared_ptr<FileSystemReader> reader, std::string file)
        : engine(runtime), place(std::move(reader)), path(std::move(file))
    {
    }

    Task<Facts> look() override { return look(Asker::user); }

    Task<std::string> read(std::int64_t offset, std::size_t length) override
    {
        return place->readChunk(path, offset, length);
    }

    Task<Found> find(Question question, FileSearch::Progress progress) override
    {
        if (auto host = std::dynamic_pointer_cast<CommandHost>(place))
            return findThere({engine, std::move(host), place, path, std::move(question), std::move(progress)});
        PartSearch const search(std::move(question.sought), question.part, question.which);
        if (!std::dynamic_pointer_cast<LocalProvider>(place))
            return findByReading(place, path, search);
        return engine.files().run(
            path, FileLanes::LastLink::follow, WorkPriority::background,
            [file = path, search](std::string const & /*place*/) { return findHere(file, search); });
    }

    Task<Facts> next(std::optional<Facts> known) override
    {
        auto const isHere = std::dynamic_pointer_cast<LocalProvider>(place) != nullptr;
        return FollowedFile::next({.engine = engine,
                                   .path = path,
                                   .news = isHere ? FollowedFile::News::events : FollowedFile::News::questions,
                                   .look = [self = shared_from_this()] { return self->look(Asker::follower); }},
                                  std::move(known));
    }

private:
    Task<Facts> look(Asker asker) const
    {
        if (auto host = std::dynamic_pointer_cast<CommandHost>(place))
            return lookThere(std::move(host), path, asker);
        if (!std::dynamic_pointer_cast<LocalProvider>(place))
            return lookInside(place, path);
        return engine.files().run(path, FileLanes::LastLink::follow, WorkPriority::interactive,
                                  [file = path](std::string const & /*place*/) { return lookHere(file); });
    }

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
