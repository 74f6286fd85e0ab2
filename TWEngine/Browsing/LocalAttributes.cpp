#include "TWEngine/Browsing/LocalAttributes.h"

#include "TWCore/Async/Cancelled.h"

#include <algorithm>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

namespace tw {

namespace {

/// All but the name.
void takeAttributes(Entry &entry, Entry const &from)
{
    entry.kind = from.kind;
    entry.size = from.size;
    entry.mtime = from.mtime;
    entry.mode = from.mode;
}

} // namespace

bool setLocalAttributes(Entry &entry, int directory, std::string const &name)
{
    constexpr mode_t permissionBits = 07777; // with set-user-id, set-group-id and sticky
    struct stat status;
    if (fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return false;
    entry.kind = entryKindOfMode(status.st_mode);
    entry.size = status.st_size;
    entry.mtime = status.st_mtim.tv_sec;
    entry.mode = static_cast<std::uint16_t>(status.st_mode & permissionBits);
    return true;
}

std::size_t LocalAttributes::threadsFor(std::chrono::nanoseconds question)
{
    // A local disk answers from memory in some microseconds; a second thread gains there and a third one hardly.
    constexpr std::chrono::microseconds anotherThreadEach{50};
    static std::size_t const fewest = std::thread::hardware_concurrency() > 1 ? 2 : 1;
    auto const slowness = static_cast<std::size_t>(std::max<std::int64_t>(question / anotherThreadEach, 0));
    return std::min(fewest + slowness, mostThreads);
}

LocalAttributes::~LocalAttributes()
{
    std::lock_guard const lock(mutex);
    isComplete = true;
    next = parts.size();
    changed.notify_all();
}

void LocalAttributes::add(Part part)
{
    if (stop.stop_requested())
        throw Cancelled();
    std::unique_lock lock(mutex);
    added += part.entries.size();
    parts.push_back(std::move(part));
    if (added < largeDirectory)
        return;
    if (helpers.count() == 0)
        examineNext(lock); // measures, and starts the helpers
    else
        changed.notify_one();
}

std::deque<LocalAttributes::Part> LocalAttributes::finish()
{
    std::unique_lock lock(mutex);
    isComplete = true;
    changed.notify_all();
    while (examineNext(lock)) {
    }
    changed.wait(lock, [this] { return busy == 0; });
    if (stop.stop_requested())
        throw Cancelled();
    next = 0;
    return std::exchange(parts, {});
}

/// False if there is no part left. The lock is given up while the system is asked.
bool LocalAttributes::examineNext(std::unique_lock<std::mutex> &lock)
{
    if (next == parts.size() || stop.stop_requested())
        return false;
    auto &part = parts[next++]; // stays where it is while others are added
    ++busy;
    lock.unlock();
    auto const question = examine(part);
    lock.lock();
    if (--busy == 0)
        changed.notify_all();
    auto const isLarge = added >= largeDirectory;
    while (isLarge && next < parts.size() && helpers.count() + 1 < threadsFor(question)) {
        if (!helpers.start([this] { help(); }))
            break;
    }
    return true;
}

void LocalAttributes::help()
{
    std::unique_lock lock(mutex);
    do {
        while (examineNext(lock)) {
        }
        if (isComplete || stop.stop_requested())
            return;
        changed.wait(lock);
    } while (true);
}

/// How long one question took on the average.
std::chrono::nanoseconds LocalAttributes::examine(Part &part) const
{
    auto const started = std::chrono::steady_clock::now();
    std::string name;
    for (auto &entry : part.entries) {
        name.assign(part.names, entry.nameOffset, entry.nameLength);
        auto const row = known.find(name);
        if (row == known.end())
            setLocalAttributes(entry, directory, name);
        else if (row->second)
            takeAttributes(entry, *row->second);
    }
    auto const questions = std::max<std::size_t>(part.entries.size(), 1);
    return (std::chrono::steady_clock::now() - started) / questions;
}

} // namespace tw
