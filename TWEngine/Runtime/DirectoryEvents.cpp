#include "TWEngine/Runtime/DirectoryEvents.h"

#include "TWEngine/Runtime/Completion.h"
#include "TWEngine/Runtime/IoThread.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include <sys/inotify.h>
#include <unistd.h>

namespace tw {

namespace {

using boost::asio::posix::stream_descriptor;

/// A file that is written to piece by piece reports each piece; its end is enough.
constexpr std::uint32_t changes = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE | IN_ATTRIB;
constexpr std::uint32_t ends = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;
constexpr std::uint32_t wanted = changes | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR | IN_EXCL_UNLINK;

/// A file that is deleted while it is open has one link less, which IN_ATTRIB reports.
constexpr std::uint32_t wantedOfFile = IN_MODIFY | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF;

/// Events are fetched at most so often: a program that writes thousands of files a second wakes us 20 times, not for
/// each. Who waits for quiet waits much longer.
constexpr std::chrono::milliseconds restAfterEvents{50};

/// After the first event behind a silence. A file that is made is closed a moment later, and who waits for quiet should
/// not take the end of that for a later change.
constexpr std::chrono::milliseconds restAfterFirst{5};

/// Longer than a rest: who writes all the time is not silent meanwhile.
constexpr std::chrono::milliseconds silence{2 * restAfterEvents};

/// Of one reading; what is left is read after the next rest. The kernel's own queue is bounded too.
constexpr int mostReads = 16;
constexpr std::size_t bytesOfRead = 64 * 1024;

/// How often a watch is begun again because another one ended meanwhile, which may have been on the same folder.
constexpr int mostTries = 8;

/// What has come for one watch and was not taken yet.
class Inbox {
public:
    void put(FolderWatch::Event event)
    {
        std::shared_ptr<Completion<Done>> toWake;
        {
            std::lock_guard const lock(mutex);
            isGone |= event == FolderWatch::Event::gone;
            hasChanged = true;
            toWake = std::exchange(waiter, nullptr);
        }
        if (toWake)
            toWake->succeed({});
    }

    static Task<FolderWatch::Event> next(std::shared_ptr<Inbox> self)
    {
        for (;;) {
            std::shared_ptr<Completion<Done>> waiting;
            {
                std::lock_guard const lock(self->mutex);
                if (self->isGone)
                    co_return FolderWatch::Event::gone;
                if (std::exchange(self->hasChanged, false))
                    co_return FolderWatch::Event::changed;
                waiting = self->waiter = std::make_shared<Completion<Done>>();
            }
            co_await Completion<Done>::wait(waiting);
        }
    }

private:
    std::mutex mutex;
    // Under the mutex.
    bool hasChanged = false;
    bool isGone = false;
    std::shared_ptr<Completion<Done>> waiter;
};

} // namespace

struct DirectoryEvents::Queue : std::enable_shared_from_this<Queue> {
    explicit Queue(boost::asio::io_context &io) : context(io), descriptor(io), rest(io) {}

    class Watch;

    std::shared_ptr<FolderWatch> watch(std::string const &path);
    bool ensureOpen();
    void reportLimit(int error);
    void remove(int number, std::shared_ptr<Inbox> const &inbox);

    // On the I/O thread.
    void waitForEvents();
    void waitBehindRest();
    bool readEvents();
    void take(char const *from, std::size_t length);
    void deliver(inotify_event const &event);
    void close();

    boost::asio::io_context &context;

    // On the I/O thread.
    stream_descriptor descriptor;
    boost::asio::steady_timer rest;
    std::chrono::steady_clock::time_point lastRead;
    alignas(inotify_event) std::array<char, bytesOfRead> buffer{};

    std::mutex mutex;
    // Under the mutex.
    int inotify = -1; ///< that of `descriptor`; set once
    bool isClosed = false;
    std::map<int, std::vector<std::shared_ptr<Inbox>>> inboxes; ///< by the kernel's number of the watch
    std::uint64_t endings = 0;                                  ///< of watches
    std::function<void(std::string_view)> report;
    std::vector<int> reported;
};

class DirectoryEvents::Queue::Watch final : public FolderWatch {
public:
    Watch(std::shared_ptr<Queue> of, int kernelNumber, std::shared_ptr<Inbox> with)
        : queue(std::move(of)), number(kernelNumber), inbox(std::move(with))
    {
    }

    ~Watch() override { queue->remove(number, inbox); }

    Watch(Watch const &) = delete;
    Watch &operator=(Watch const &) = delete;

    Task<Event> next() override { return Inbox::next(inbox); }

private:
    std::shared_ptr<Queue> const queue;
    int const number;
    std::shared_ptr<Inbox> const inbox;
};

DirectoryEvents::DirectoryEvents(IoThread &io) : queue(std::make_shared<Queue>(io.context())) {}

DirectoryEvents::~DirectoryEvents()
{
    {
        std::lock_guard const lock(queue->mutex);
        queue->isClosed = true;
    }
    boost::asio::post(queue->context, [closing = queue] { closing->close(); });
}

std::shared_ptr<FolderWatch> DirectoryEvents::watch(std::string const &path) const
{
    return queue->watch(path);
}

void DirectoryEvents::reportLimits(std::function<void(std::string_view line)> report) const
{
    std::lock_guard const lock(queue->mutex);
    queue->report = std::move(report);
}

/// The kernel has one watch for all paths that lead to the same folder. Another holder of that one may end it between
/// our asking for it and our noting it, so we ask again if any has ended meanwhile.
std::shared_ptr<FolderWatch> DirectoryEvents::Queue::watch(std::string const &path)
{
    if (!ensureOpen())
        return nullptr;
    auto inbox = std::make_shared<Inbox>();
    for (int tries = 0; tries < mostTries; ++tries) {
        std::uint64_t endingsBefore = 0;
        {
            std::lock_guard const lock(mutex);
            endingsBefore = endings;
        }
        // Without the mutex, since it waits for a dead mount.
        auto number = ::inotify_add_watch(inotify, path.c_str(), wanted);
        if (number < 0 && errno == ENOTDIR)
            number = ::inotify_add_watch(inotify, path.c_str(), wantedOfFile);
        if (number < 0) {
            reportLimit(errno);
            return nullptr;
        }
        std::lock_guard const lock(mutex);
        if (endings != endingsBefore)
            continue;
        inboxes[number].push_back(inbox);
        return std::make_shared<Watch>(shared_from_this(), number, std::move(inbox));
    }
    return nullptr;
}

bool DirectoryEvents::Queue::ensureOpen()
{
    int error = 0;
    {
        std::lock_guard const lock(mutex);
        if (isClosed)
            return false;
        if (inotify >= 0)
            return true;
        auto const opened = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
        boost::system::error_code failure;
        if (opened < 0)
            error = errno;
        else if (descriptor.assign(opened, failure); failure)
            ::close(opened);
        else
            inotify = opened;
    }
    if (error != 0)
        reportLimit(error);
    if (inotify < 0)
        return false;
    boost::asio::post(context, [self = shared_from_this()] { self->waitForEvents(); });
    return true;
}

void DirectoryEvents::Queue::reportLimit(int error)
{
    if (error != EMFILE && error != ENFILE && error != ENOSPC)
        return;
    std::function<void(std::string_view)> toReport;
    {
        std::lock_guard const lock(mutex);
        if (!report || std::ranges::find(reported, error) != reported.end())
            return;
        reported.push_back(error);
        toReport = report;
    }
    toReport(error == ENOSPC
                 ? "no more folders can be watched (fs.inotify.max_user_watches); folders are read every few seconds"
                 : "folders cannot be watched (fs.inotify.max_user_instances or the limit of open files); they are "
                   "read every few seconds");
}

void DirectoryEvents::Queue::remove(int number, std::shared_ptr<Inbox> const &inbox)
{
    std::lock_guard const lock(mutex);
    auto const found = inboxes.find(number);
    if (found == inboxes.end())
        return; // the kernel has ended it
    std::erase(found->second, inbox);
    if (!found->second.empty())
        return;
    inboxes.erase(found);
    ++endings;
    ::inotify_rm_watch(inotify, number);
}

void DirectoryEvents::Queue::waitForEvents()
{
    descriptor.async_wait(stream_descriptor::wait_read, [self = shared_from_this()](boost::system::error_code error) {
        if (!error && self->readEvents())
            self->waitBehindRest();
    });
}

void DirectoryEvents::Queue::waitBehindRest()
{
    auto const now = std::chrono::steady_clock::now();
    auto const wasSilent = now - std::exchange(lastRead, now) > silence;
    rest.expires_after(wasSilent ? restAfterFirst : restAfterEvents);
    rest.async_wait([self = shared_from_this()](boost::system::error_code cancelled) {
        if (!cancelled)
            self->waitForEvents();
    });
}

/// False if nothing will come any more.
bool DirectoryEvents::Queue::readEvents()
{
    for (int reads = 0; reads < mostReads; ++reads) {
        auto const length = ::read(descriptor.native_handle(), buffer.data(), buffer.size());
        if (length <= 0)
            return length < 0 && (errno == EAGAIN || errno == EINTR);
        take(buffer.data(), static_cast<std::size_t>(length));
    }
    return true;
}

void DirectoryEvents::Queue::take(char const *from, std::size_t length)
{
    for (std::size_t at = 0; at + sizeof(inotify_event) <= length;) {
        inotify_event event{};
        std::memcpy(&event, from + at, sizeof event); // the name, which nobody needs, follows
        deliver(event);
        at += sizeof event + event.len;
    }
}

void DirectoryEvents::Queue::deliver(inotify_event const &event)
{
    std::vector<std::shared_ptr<Inbox>> receivers;
    auto const isEnd = (event.mask & ends) != 0;
    {
        std::lock_guard const lock(mutex);
        if ((event.mask & IN_Q_OVERFLOW) != 0) {
            for (auto const &[number, some] : inboxes)
                receivers.insert(receivers.end(), some.begin(), some.end());
        } else if (auto const found = inboxes.find(event.wd); found != inboxes.end()) {
            receivers = found->second;
        }
        if ((event.mask & IN_IGNORED) != 0) {
            inboxes.erase(event.wd);
            ++endings;
        }
    }
    for (auto const &each : receivers)
        each->put(isEnd ? FolderWatch::Event::gone : FolderWatch::Event::changed);
}

void DirectoryEvents::Queue::close()
{
    boost::system::error_code ignored;
    descriptor.close(ignored);
    rest.cancel();
}

} // namespace tw
