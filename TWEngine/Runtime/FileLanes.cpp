#include "TWEngine/Runtime/FileLanes.h"

#include "TWEngine/Runtime/WholeFile.h"

#include <climits>
#include <filesystem>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace tw {

namespace {

/// Some ten thousand mounts, as on a large host of containers.
constexpr std::size_t mostMountInfoBytes = 4 << 20;

/// The text of a link; nothing of what is no link or is not there.
std::optional<std::string> linkText(std::string const &path)
{
    std::string text(PATH_MAX, '\0');
    auto const length = ::readlink(path.c_str(), text.data(), text.size());
    if (length <= 0)
        return std::nullopt;
    text.resize(static_cast<std::size_t>(length));
    return text;
}

/// By the text alone. A ".." behind a link means another folder to the system, which can cost no more than a lane.
std::string withoutDots(std::string const &path)
{
    auto text = std::filesystem::path(path).lexically_normal().string();
    while (text.size() > 1 && text.ends_with('/'))
        text.pop_back();
    return text;
}

} // namespace

FileLanes::FileLanes(Limits bounds, char const *mountInfoFile)
    : limits(bounds), mountInfo(::open(mountInfoFile, O_RDONLY | O_CLOEXEC)), helperBudget(bounds.helpers)
{
}

FileLanes::~FileLanes()
{
    for (auto const &lane : allLanes()) {
        lane.background->close();
        lane.interactive->close();
    }
}

std::shared_ptr<MountTable const> FileLanes::mounts()
{
    std::lock_guard const lock(mutex);
    if (table && !haveMountsChanged())
        return table;
    std::string text;
    if (!mountInfo || ::lseek(mountInfo.get(), 0, SEEK_SET) != 0 ||
        WholeFile::readUpTo(mountInfo.get(), mostMountInfoBytes, text) != 0)
        text.clear(); // all share one lane
    table = std::make_shared<MountTable const>(MountTable::parse(text));
    return table;
}

/// The kernel marks the file once after each change.
bool FileLanes::haveMountsChanged() const
{
    if (!mountInfo)
        return false;
    pollfd watched{.fd = mountInfo.get(), .events = POLLPRI, .revents = 0};
    return ::poll(&watched, 1, 0) > 0 && (watched.revents & POLLPRI) != 0;
}

bool FileLanes::isFull(MountTable::MountId mount, WorkPriority priority)
{
    std::lock_guard const lock(mutex);
    return laneOf({mount, mount}).of(priority)->isFull();
}

void FileLanes::waitUntilIdle()
{
    for (auto const &lane : allLanes()) {
        lane.interactive->waitUntilIdle();
        lane.background->waitUntilIdle();
    }
}

std::uint64_t FileLanes::posted()
{
    std::lock_guard const lock(mutex);
    return postedCount;
}

std::string FileLanes::followLinks(MountTable const &table, std::string path, LastLink last)
{
    path = withoutDots(path);
    auto const mount = table.mountOf(path);
    int links = 0;
    for (std::size_t end = 1; end < path.size() && links < mostLinks;) {
        end = std::min(path.find('/', end), path.size());
        if (last == LastLink::keep && end == path.size())
            break;
        auto const part = path.substr(0, end);
        // Above the mount point there are no links: the kernel's table names it without.
        auto const target = table.mountOf(part) == mount ? linkText(part) : std::nullopt;
        if (!target) {
            ++end;
            continue;
        }
        auto const parent = part.substr(0, part.rfind('/'));
        path = withoutDots((target->starts_with('/') ? *target : parent + '/' + *target) + path.substr(end));
        if (table.mountOf(path) != mount)
            break;
        ++links;
        end = 1;
    }
    return path;
}

Task<std::string> FileLanes::placeOf(std::string path, LastLink last, WorkPriority priority)
{
    return run(std::move(path), last, priority, [](std::string const &place) { return place; });
}

void FileLanes::post(Key key, WorkPriority priority, Work work)
{
    // Under the mutex to the end: a lane at rest may be removed otherwise before it has the work.
    std::lock_guard const lock(mutex);
    ++postedCount;
    laneOf(key).of(priority)->post(std::move(work));
}

FileLanes::Lane &FileLanes::laneOf(Key key)
{
    constexpr Key shared{-1, -1};
    if (auto const found = lanes.find(key); found != lanes.end())
        return found->second;
    if (lanes.size() + 1 >= limits.lanes)
        removeLanesAtRest();
    if (lanes.size() + 1 >= limits.lanes)
        key = shared;
    auto &lane = lanes[key];
    if (!lane.interactive) {
        ThreadLane::Limits const bounds{.threads = limits.threadsPerLane, .idleTime = limits.idleTime};
        lane.interactive = std::make_shared<ThreadLane>(WorkPriority::interactive, bounds);
        lane.background = std::make_shared<ThreadLane>(WorkPriority::background, bounds);
    }
    return lane;
}

void FileLanes::removeLanesAtRest()
{
    std::erase_if(lanes, [](auto const &each) {
        auto const &lane = each.second;
        if (!lane.interactive->isAtRest() || !lane.background->isAtRest())
            return false;
        lane.interactive->close();
        lane.background->close();
        return true;
    });
}

std::vector<FileLanes::Lane> FileLanes::allLanes()
{
    std::lock_guard const lock(mutex);
    std::vector<Lane> all;
    for (auto const &[key, lane] : lanes)
        all.push_back(lane);
    return all;
}

} // namespace tw
