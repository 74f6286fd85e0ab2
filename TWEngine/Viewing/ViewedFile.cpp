#include "TWEngine/Viewing/ViewedFile.h"

#include "TWCore/Model/ReadError.h"
#include "TWCore/Provider/CommandHost.h"
#include "TWCore/Shell/FileQuestion.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Runtime/EngineRuntime.h"

#include <cerrno>

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
