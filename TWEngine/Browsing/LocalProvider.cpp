#include "TWEngine/Browsing/LocalProvider.h"

#include "TWCore/Model/ListingParser.h"
#include "TWEngine/Browsing/LocalFiles.h"
#include "TWEngine/Browsing/LocalListing.h"
#include "TWEngine/Browsing/LocalWrites.h"

namespace tw {

namespace {

WorkPriority workPriority(FetchPriority priority)
{
    return priority == FetchPriority::interactive ? WorkPriority::interactive : WorkPriority::background;
}

Task<Listings> fetchOnPool(WorkerPool const *pool, std::string path, WorkPriority priority)
{
    auto const context = co_await currentContext();
    auto listings = co_await pool->run(priority, [path = std::move(path), stop = context.stop] {
        Listings result;
        auto snapshot = readLocalDirectory(path, stop);
        result.emplace(path, std::move(snapshot));
        return result;
    });
    co_return listings;
}

Task<void> trashOnPool(WorkerPool const *pool, std::vector<std::string> paths)
{
    auto const context = co_await currentContext();
    co_await pool->run(WorkPriority::interactive,
                       [paths = std::move(paths), stop = context.stop] { LocalWrites::moveToTrash(paths, stop); });
}

} // namespace

Task<Listings> LocalProvider::fetch(std::string path, int /*depth*/, FetchPriority priority)
{
    return fetchOnPool(&pool, ListingParser::normalize(path), workPriority(priority));
}

Task<std::string> LocalProvider::readChunk(std::string path, std::int64_t offset, std::size_t length)
{
    return pool.run(WorkPriority::interactive,
                    [path = std::move(path), offset, length] { return LocalFiles::readChunk(path, offset, length); });
}

Task<std::int64_t> LocalProvider::fileSize(std::string path)
{
    return pool.run(WorkPriority::interactive, [path = std::move(path)] { return LocalFiles::size(path); });
}

Task<void> LocalProvider::download(std::string path, std::string localPath)
{
    return pool.run(WorkPriority::interactive, [path = std::move(path), localPath = std::move(localPath)] {
        LocalFiles::copyTo(path, localPath);
    });
}

Task<void> LocalProvider::upload(std::string localPath, std::string path)
{
    if (localPath == path)
        return nothingToDo();
    return pool.run(WorkPriority::interactive, [path = std::move(path), localPath = std::move(localPath)] {
        LocalFiles::writeInto(localPath, path);
    });
}

Task<void> LocalProvider::makeDirectory(std::string path)
{
    return pool.run(WorkPriority::interactive, [path = std::move(path)] { LocalWrites::makeDirectory(path); });
}

Task<void> LocalProvider::remove(std::vector<std::string> paths)
{
    return trashOnPool(&pool, std::move(paths));
}

Task<void> LocalProvider::rename(std::string from, std::string to)
{
    return pool.run(WorkPriority::interactive,
                    [from = std::move(from), to = std::move(to)] { LocalWrites::rename(from, to); });
}

} // namespace tw
