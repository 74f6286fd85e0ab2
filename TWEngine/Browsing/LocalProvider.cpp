#include "TWEngine/Browsing/LocalProvider.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Async/WhenAll.h"
#include "TWCore/Model/ListingParser.h"
#include "TWEngine/Browsing/LocalFacts.h"
#include "TWEngine/Browsing/LocalFiles.h"
#include "TWEngine/Browsing/LocalListing.h"
#include "TWEngine/Browsing/LocalMove.h"
#include "TWEngine/Browsing/LocalRemoval.h"
#include "TWEngine/Browsing/LocalSurvey.h"
#include "TWEngine/Browsing/LocalWrites.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/TimeOut.h"

#include <fcntl.h>

namespace tw {

namespace {

using LastLink = FileLanes::LastLink;
using Known = LocalAttributes::Known;

/// How long a listing waits for the attributes of what is mounted in the folder. A mount that answers later, or never,
/// is listed without them.
constexpr std::chrono::milliseconds patienceWithMounts{250};

/// Of the mounts in one folder: as many as have lanes of their own.
constexpr std::size_t mostQuestionsAtOnce = 32;

WorkPriority workPriority(FetchPriority priority)
{
    return priority == FetchPriority::interactive ? WorkPriority::interactive : WorkPriority::background;
}

std::string pathIn(std::string const &folder, std::string const &name)
{
    return (folder == "/" ? folder : folder + '/') + name;
}

/// A reading of a folder; without a snapshot if the folder has mount points, whose rows are to be asked for first.
struct Reading {
    std::string place;
    std::vector<std::string> mountPoints;
    std::optional<DirectorySnapshot> snapshot;
};

Task<Reading> read(FileLanes *lanes, std::string path, WorkPriority priority, std::optional<Known> known)
{
    auto const context = co_await currentContext();
    auto reading = co_await lanes->run(
        path, LastLink::follow, priority,
        [lanes, path, known = std::move(known), stop = context.stop](std::string const &place) -> Reading {
            auto mountPoints = known ? std::vector<std::string>() : lanes->mounts()->mountPointsIn(place);
            if (!mountPoints.empty())
                return {place, std::move(mountPoints), std::nullopt};
            return {place, {}, readLocalDirectory(path, known.value_or(Known()), lanes->helpers(), stop)};
        });
    co_return reading;
}

Task<std::optional<Entry>> attributesOf(FileLanes *lanes, std::string path, WorkPriority priority)
{
    return lanes->run(path, LastLink::keep, priority, [path](std::string const & /*place*/) {
        Entry entry;
        auto const isThere = setLocalAttributes(entry, AT_FDCWD, path);
        return isThere ? std::optional(entry) : std::nullopt;
    });
}

/// Nothing if the mount does not answer in time.
Task<std::optional<Entry>> attributesInTime(FileLanes *lanes, std::shared_ptr<Clock> clock, std::string path,
                                            WorkPriority priority)
{
    auto outcome = co_await outcomeOf(
        withTimeOut(std::move(clock), patienceWithMounts, attributesOf(lanes, std::move(path), priority)));
    try {
        co_return outcome.take();
    } catch (TimedOut const &) {
    }
    co_return std::nullopt;
}

/// The rows of mount points, each asked for in the lane of what is mounted there.
Task<Known> rowsOfMounts(FileLanes *lanes, std::shared_ptr<Clock> clock, std::string folder,
                         std::vector<std::string> names, WorkPriority priority)
{
    auto const mounts = lanes->mounts();
    Known rows;
    std::vector<std::string> asked;
    std::vector<Task<std::optional<Entry>>> questions;
    for (auto const &name : names) {
        rows.emplace(name, std::nullopt);
        auto const path = pathIn(folder, name);
        // A lane whose threads all hang is not asked again and again.
        if (lanes->isFull(mounts->mountOf(path), priority))
            continue;
        asked.push_back(name);
        questions.push_back(attributesInTime(lanes, clock, path, priority));
    }
    auto answers = co_await whenAll(std::move(questions), mostQuestionsAtOnce);
    for (std::size_t index = 0; index < asked.size(); ++index)
        rows[asked[index]] = answers[index];
    co_return rows;
}

Task<Listings> fetchInLanes(FileLanes *lanes, std::shared_ptr<Clock> clock, std::string path, WorkPriority priority)
{
    auto reading = co_await read(lanes, path, priority, std::nullopt);
    if (!reading.snapshot) {
        auto rows = co_await rowsOfMounts(lanes, std::move(clock), reading.place, reading.mountPoints, priority);
        reading = co_await read(lanes, path, priority, std::move(rows));
    }
    Listings listings;
    listings.emplace(path, std::move(*reading.snapshot));
    co_return listings;
}

std::string startOf(std::string const &path)
{
    return path.substr(0, path.rfind('/') + 1);
}

/// The paths in one folder and on one mount are one piece of work: a hop to its thread costs more than a renaming.
Task<void> moveToTrash(FileLanes *lanes, std::vector<std::string> paths)
{
    auto const context = co_await currentContext();
    for (auto first = paths.begin(); first != paths.end();) {
        auto const mounts = lanes->mounts();
        auto const end = std::find_if(first, paths.end(), [&](std::string const &path) {
            return startOf(path) != startOf(*first) || mounts->mountOf(path) != mounts->mountOf(*first);
        });
        co_await lanes->run(*first, LastLink::keep, WorkPriority::interactive,
                            [some = std::vector(first, end), stop = context.stop](std::string const & /*place*/) {
                                for (auto const &path : some) {
                                    if (stop.stop_requested())
                                        throw Cancelled();
                                    LocalWrites::moveToTrash(path);
                                }
                            });
        first = end;
    }
}

Task<void> removeAllForGood(FileLanes *lanes, std::vector<std::string> paths, LockedFolders locked)
{
    auto const context = co_await currentContext();
    for (auto const &path : paths)
        co_await lanes->run(
            path, LastLink::keep, WorkPriority::interactive,
            [path, locked, stop = context.stop](std::string const & /*place*/) { removeForGood(path, stop, locked); });
}

using Moves = std::shared_ptr<std::vector<FileSystemWriter::Move> const>;
using Existing = FileSystemWriter::Existing;

/// Behind the last of the moves from `first` on that go from the same folder to the same folder.
std::size_t endOfRun(Moves const &moves, std::size_t first)
{
    auto end = first;
    while (end < moves->size() && startOf((*moves)[end].from) == startOf((*moves)[first].from) &&
           startOf((*moves)[end].to) == startOf((*moves)[first].to))
        ++end;
    return end;
}

/// The moves from `first` up to `end` as one piece of work. Returns the first that leads to another file system, or
/// `end`.
Task<std::size_t> moveInOneLane(FileLanes *lanes, Moves moves, Existing existing, std::size_t first, std::size_t end)
{
    auto const context = co_await currentContext();
    auto const &[from, to] = (*moves)[first];
    auto const done = co_await lanes->runBetween(
        from, to, LastLink::keep, WorkPriority::interactive, [moves, existing, first, end, stop = context.stop] {
            for (auto index = first; index < end; ++index) {
                if (stop.stop_requested())
                    throw Cancelled();
                auto const &move = (*moves)[index];
                if (LocalWrites::rename(move.from, move.to, existing) == LocalWrites::Renamed::isOnAnotherFileSystem)
                    return index;
            }
            return end;
        });
    co_return done;
}

Task<void> moveAllInLanes(FileLanes *lanes, Moves moves, Existing existing)
{
    for (std::size_t first = 0; first < moves->size();) {
        auto const end = endOfRun(moves, first);
        auto const done = co_await moveInOneLane(lanes, moves, existing, first, end);
        if (done < end)
            throw FileOperationError::OtherFileSystem((*moves)[done].from);
        first = end;
    }
}

Task<void> renameAnywhere(EngineRuntime *engine, FileSystemWriter::Move move)
{
    auto const moves = std::make_shared<std::vector<FileSystemWriter::Move> const>(1, move);
    auto const done = co_await moveInOneLane(&engine->files(), moves, Existing::stays, 0, 1);
    if (done == 0)
        co_await moveToOtherFileSystem(*engine, std::move(move));
}

Task<Survey> surveyInLane(FileLanes *lanes, std::string folder, std::vector<std::string> names, Survey::Detail detail)
{
    auto const context = co_await currentContext();
    auto survey = co_await lanes->run(folder, LastLink::follow, WorkPriority::interactive,
                                      [folder, names, detail, stop = context.stop](std::string const & /*place*/) {
                                          return localSurvey(folder, names, stop, detail);
                                      });
    co_return survey;
}

} // namespace

LocalProvider::LocalProvider(EngineRuntime &runtime) : engine(runtime), lanes(engine.files()), clock(engine.clock()) {}

Task<Listings> LocalProvider::fetch(std::string path, int /*depth*/, FetchPriority priority)
{
    return fetchInLanes(&lanes, clock, ListingParser::normalize(path), workPriority(priority));
}

Task<std::string> LocalProvider::readChunk(std::string path, std::int64_t offset, std::size_t length)
{
    return lanes.run(
        path, LastLink::follow, WorkPriority::interactive,
        [path, offset, length](std::string const & /*place*/) { return LocalFiles::readChunk(path, offset, length); });
}

Task<std::int64_t> LocalProvider::fileSize(std::string path)
{
    return lanes.run(path, LastLink::keep, WorkPriority::interactive,
                     [path](std::string const & /*place*/) { return LocalFiles::size(path); });
}

Task<void> LocalProvider::download(std::string path, std::string localPath)
{
    return lanes.runBetween(path, localPath, LastLink::follow, WorkPriority::interactive,
                            [path, localPath] { LocalFiles::copyTo(path, localPath); });
}

Task<void> LocalProvider::upload(std::string localPath, std::string path)
{
    if (localPath == path)
        return nothingToDo();
    return lanes.runBetween(path, localPath, LastLink::follow, WorkPriority::interactive,
                            [path, localPath] { LocalFiles::writeInto(localPath, path); });
}

Task<void> LocalProvider::makeDirectory(std::string path)
{
    return lanes.run(path, LastLink::follow, WorkPriority::interactive,
                     [path](std::string const & /*place*/) { LocalWrites::makeDirectory(path); });
}

Task<void> LocalProvider::removeEmptyFolder(std::string path)
{
    return lanes.run(path, LastLink::keep, WorkPriority::interactive,
                     [path](std::string const & /*place*/) { LocalWrites::removeEmptyFolder(path); });
}

Task<void> LocalProvider::remove(std::vector<std::string> paths)
{
    return moveToTrash(&lanes, std::move(paths));
}

Task<void> LocalProvider::rename(std::string from, std::string to)
{
    return renameAnywhere(&engine, {std::move(from), std::move(to)});
}

Task<void> LocalProvider::moveAll(std::vector<Move> moves, Existing existing)
{
    return moveAllInLanes(&lanes, std::make_shared<std::vector<Move> const>(std::move(moves)), existing);
}

Task<void> LocalProvider::removePermanently(std::vector<std::string> paths, LockedFolders locked)
{
    return removeAllForGood(&lanes, std::move(paths), locked);
}

Task<FolderFacts> LocalProvider::factsAbout(std::string folder, std::vector<std::string> names)
{
    return lanes.run(
        folder, LastLink::follow, WorkPriority::interactive,
        [folder, names = std::move(names)](std::string const & /*place*/) { return localFactsAbout(folder, names); });
}

Task<Survey> LocalProvider::survey(std::string folder, std::vector<std::string> names, Survey::Detail detail)
{
    return surveyInLane(&lanes, std::move(folder), std::move(names), detail);
}

Task<void> LocalProvider::sync(std::string folder)
{
    return lanes.run(folder, LastLink::follow, WorkPriority::interactive,
                     [folder](std::string const & /*place*/) { LocalWrites::sync(folder); });
}

Task<std::shared_ptr<FolderWatch>> LocalProvider::watchFolder(std::string path)
{
    return lanes.run(
        path, LastLink::follow, WorkPriority::background,
        [&events = engine.directoryEvents(), path](std::string const & /*place*/) { return events.watch(path); });
}

} // namespace tw
