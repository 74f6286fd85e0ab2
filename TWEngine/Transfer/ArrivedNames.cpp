#include "TWEngine/Transfer/ArrivedNames.h"

#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/OpenFolder.h"

#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

namespace tw {

namespace {

/// The walk holds two descriptors for each level; it goes no deeper than the system has them.
constexpr int mostLevels = 200;

/// cp gives a file its time and then its mode, and nothing to the group and to others before. A file system without
/// modes of its own gives them something.
bool hasItsMode(struct stat const &source, struct stat const &target)
{
    return source.st_mode == target.st_mode || (target.st_mode & (S_IRWXG | S_IRWXO)) != 0;
}

std::pair<time_t, long> ordered(timespec const &time)
{
    return {time.tv_sec, time.tv_nsec};
}

/// A file system keeps a time to the nanosecond, or rounds it down: FAT to two seconds. What is still written to has a
/// later one.
bool hasItsTime(struct stat const &source, struct stat const &target)
{
    auto earliest = source.st_mtim;
    earliest.tv_sec -= 2;
    auto const kept = ordered(target.st_mtim);
    return ordered(earliest) < kept && kept <= ordered(source.st_mtim);
}

bool isSame(struct stat const &source, struct stat const &target)
{
    bool const isFolder = S_ISDIR(source.st_mode);
    return (source.st_mode & S_IFMT) == (target.st_mode & S_IFMT) && (isFolder || source.st_size == target.st_size) &&
           hasItsTime(source, target) && hasItsMode(source, target);
}

FileDescriptor openWay(int parent, char const *folder, int flags = 0)
{
    return FileDescriptor(::openat(parent, folder, O_PATH | O_DIRECTORY | O_CLOEXEC | flags));
}

/// A walk through what is there by now.
class Walk {
public:
    Walk(ArrivedNames::Copying const &of, std::stop_token const &token) : copying(of), stop(token) {}

    ArrivedNames run(std::string const &from, std::string const &to)
    {
        auto const source = openWay(AT_FDCWD, from.c_str());
        auto const target = openWay(AT_FDCWD, to.c_str());
        for (auto const &name : copying.names) {
            auto const state = add(source.get(), target.get(), name);
            bool const isComplete = state == State::complete;
            if (!isComplete && !found.firstMissing)
                found.firstMissing = name;
            (isComplete                   ? found.complete
             : state == State::unfinished ? found.partial
                                          : found.untouched)
                .push_back(name);
        }
        return std::move(found);
    }

private:
    enum class State { missing, unfinished, complete };

    State add(int from, int to, std::string const &name)
    {
        struct stat target;
        auto const state = compare(from, to, name.c_str(), target);
        bool const isFolder = state != State::missing && S_ISDIR(target.st_mode);
        bool const isComplete = state == State::complete && !copying.blamed.names.contains(name);
        if (isFolder)
            addContent(from, to, name.c_str(), 0);
        else if (isComplete)
            ++found.files;
        if (isFolder && isComplete && !isFinished(target))
            return State::unfinished;
        return isComplete || state == State::missing ? state : State::unfinished;
    }

    void addContent(int from, int to, char const *name, int level)
    {
        auto const source = openWay(from, name, O_NOFOLLOW);
        auto const target =
            openFolder(FileDescriptor(::openat(to, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)));
        if (!source || !target)
            return;
        auto const number = ::dirfd(target.get());
        while (auto const *const entry = nextEntry(target)) {
            struct stat status;
            auto const state = compare(source.get(), number, entry->d_name, status);
            if (state == State::missing)
                continue;
            if (!S_ISDIR(status.st_mode))
                found.files += state == State::complete ? 1 : 0;
            else if (level < mostLevels)
                addContent(source.get(), number, entry->d_name, level + 1);
        }
    }

    /// By what the two are themselves, whatever a folder holds.
    State compare(int from, int to, char const *name, struct stat &target) const
    {
        constexpr auto flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT;
        if (stop.stop_requested())
            throw Cancelled();
        struct stat source;
        if (::fstatat(to, name, &target, flags) != 0)
            return State::missing;
        bool const isComplete = ::fstatat(from, name, &source, flags) == 0 && isSame(source, target);
        return isComplete ? State::complete : State::unfinished;
    }

    bool isFinished(struct stat const &folder) const
    {
        return ordered(folder.st_ctim) >= ordered(copying.begun) && !copying.blamed.isEverything;
    }

    ArrivedNames::Copying const &copying;
    std::stop_token const &stop;
    ArrivedNames found;
};

Task<ArrivedNames> findHere(EngineRuntime *engine, std::string from, std::string to, ArrivedNames::Copying copying,
                            WorkPriority priority)
{
    auto const context = co_await currentContext();
    auto found = co_await engine->files().runBetween(
        from, to, FileLanes::LastLink::follow, priority,
        [from, to, copying = std::move(copying), stop = context.stop] { return Walk(copying, stop).run(from, to); });
    co_return found;
}

} // namespace

Task<ArrivedNames> ArrivedNames::find(EngineRuntime &engine, std::string from, std::string to, Copying copying,
                                      WorkPriority priority)
{
    return findHere(&engine, std::move(from), std::move(to), std::move(copying), priority);
}

} // namespace tw
