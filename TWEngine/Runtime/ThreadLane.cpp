#include "TWEngine/Runtime/ThreadLane.h"

#include "TWCore/Check.h"

#include <algorithm>
#include <system_error>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tw {

namespace {

/// Makes the calling thread give way to everything else. On Linux both calls act on one thread, not the process.
void lowerThreadPriority()
{
    constexpr int niceness = 10; // like a `nice` command without a number
    setpriority(PRIO_PROCESS, 0, niceness);

    // ioprio_set(2) has no wrapper in the C library: class "best effort" at its lowest level, 7.
    constexpr int ioprioWhoProcess = 1;
    constexpr int bestEffortLowest = (2 << 13) | 7;
    syscall(SYS_ioprio_set, ioprioWhoProcess, 0, bestEffortLowest);
}

void joinAll(std::vector<std::thread> &threads)
{
    for (auto &thread : threads)
        thread.join();
    threads.clear();
}

} // namespace

void ThreadLane::post(Work work)
{
    check(limits.threads > 0, "work of a priority that has no threads");
    {
        std::lock_guard const lock(mutex);
        if (stage == Stage::closed)
            return;
        queue.push_back(std::move(work));
        ++postedCount;
        if (stage == Stage::open && idle < queue.size() && threads.size() < limits.threads)
            return startThread();
    }
    wakeUp.notify_one(); // the thread that wakes does not find the mutex taken
}

void ThreadLane::waitUntilIdle()
{
    std::unique_lock lock(mutex);
    cameToRest.wait(lock, [this] { return queue.empty() && running == 0; });
}

std::uint64_t ThreadLane::posted()
{
    std::lock_guard const lock(mutex);
    return postedCount;
}

bool ThreadLane::isFull()
{
    std::lock_guard const lock(mutex);
    return running + queue.size() >= limits.threads;
}

bool ThreadLane::isAtRest()
{
    std::lock_guard const lock(mutex);
    return queue.empty() && threads.empty();
}

void ThreadLane::close()
{
    std::vector<std::thread> toJoin;
    {
        std::lock_guard const lock(mutex);
        stage = Stage::draining;
        toJoin.swap(threads);
        std::ranges::move(retired, std::back_inserter(toJoin));
        retired.clear();
    }
    wakeUp.notify_all();
    joinAll(toJoin);

    // Destroyed at the end, without the lock: what it held may post again.
    std::deque<Work> dropped;
    std::lock_guard const lock(mutex);
    stage = Stage::closed;
    dropped.swap(queue);
}

void ThreadLane::startThread()
{
    joinAll(retired); // each has let go of the mutex and only returns
    try {
        threads.emplace_back([this] { serve(); });
    } catch (std::system_error const &) {
        // The system has no thread left for us: those that there are do it all.
        check(!threads.empty(), "not even one thread can be started");
    }
}

void ThreadLane::retireThisThread()
{
    auto const own = std::ranges::find(threads, std::this_thread::get_id(), &std::thread::get_id);
    if (own == threads.end())
        return; // `close` joins it
    retired.push_back(std::move(*own));
    threads.erase(own);
}

/// False: the time without work is over, or the lane closes.
bool ThreadLane::waitForWork(std::unique_lock<std::mutex> &lock)
{
    auto const hasEnded = [this] { return !queue.empty() || stage != Stage::open; };
    ++idle;
    if (limits.idleTime > std::chrono::milliseconds::zero())
        wakeUp.wait_for(lock, limits.idleTime, hasEnded);
    else
        wakeUp.wait(lock, hasEnded);
    --idle;
    return !queue.empty();
}

void ThreadLane::serve()
{
    if (priority == WorkPriority::background)
        lowerThreadPriority();
    std::unique_lock lock(mutex);
    while (waitForWork(lock)) {
        auto work = std::move(queue.front());
        queue.pop_front();
        ++running;
        lock.unlock();
        work();
        work = nullptr;
        lock.lock();
        --running;
        if (running == 0 && queue.empty())
            cameToRest.notify_all();
    }
    retireThisThread();
}

} // namespace tw
