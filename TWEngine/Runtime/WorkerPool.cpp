#include "TWEngine/Runtime/WorkerPool.h"

#include "TWCore/Check.h"

#include <condition_variable>
#include <deque>
#include <system_error>
#include <thread>
#include <vector>

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

} // namespace

/// The threads of one priority, and the queue that they share.
class WorkerPool::Lane final : public Executor {
public:
    Lane(WorkPriority urgency, std::size_t limit) : priority(urgency), threadLimit(limit) {}

    void post(Work work) override
    {
        check(threadLimit > 0, "work of a priority that has no threads");
        {
            std::lock_guard const lock(mutex);
            if (stage == Stage::closed)
                return;
            queue.push_back(std::move(work));
            ++postedCount;
            if (stage == Stage::open && idle < queue.size() && threads.size() < threadLimit)
                return startThread();
        }
        wakeUp.notify_one(); // the thread that wakes does not find the mutex taken
    }

    void waitUntilIdle()
    {
        std::unique_lock lock(mutex);
        cameToRest.wait(lock, [this] { return queue.empty() && running == 0; });
    }

    std::uint64_t posted()
    {
        std::lock_guard const lock(mutex);
        return postedCount;
    }

    /// Runs what is queued, and ends the threads. Work that is posted meanwhile is run or let go.
    void close()
    {
        std::vector<std::thread> toJoin;
        {
            std::lock_guard const lock(mutex);
            stage = Stage::draining;
            toJoin.swap(threads);
        }
        wakeUp.notify_all();
        for (auto &thread : toJoin)
            thread.join();

        // Destroyed at the end, without the lock: what it held may post again.
        std::deque<Work> dropped;
        std::lock_guard const lock(mutex);
        stage = Stage::closed;
        dropped.swap(queue);
    }

private:
    enum class Stage { open, draining, closed };

    /// Called with the mutex held.
    void startThread()
    {
        try {
            threads.emplace_back([this] { serve(); });
        } catch (std::system_error const &) {
            // The system has no thread left for us: those that there are do it all.
            check(!threads.empty(), "not even one thread can be started");
        }
    }

    void serve()
    {
        if (priority == WorkPriority::background)
            lowerThreadPriority();
        std::unique_lock lock(mutex);
        for (;;) {
            ++idle;
            wakeUp.wait(lock, [this] { return !queue.empty() || stage != Stage::open; });
            --idle;
            if (queue.empty())
                return;
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
    }

    WorkPriority const priority;
    std::size_t const threadLimit;

    std::mutex mutex;
    std::condition_variable wakeUp;
    std::condition_variable cameToRest;
    // Under the mutex.
    std::deque<Work> queue;
    std::vector<std::thread> threads;
    std::size_t idle = 0;
    std::size_t running = 0;
    std::uint64_t postedCount = 0;
    Stage stage = Stage::open;
};

WorkerPool::WorkerPool(Limits limits)
    : interactive(std::make_shared<Lane>(WorkPriority::interactive, limits.interactive)),
      background(std::make_shared<Lane>(WorkPriority::background, limits.background))
{
}

WorkerPool::~WorkerPool()
{
    background->close();
    interactive->close();
}

void WorkerPool::waitUntilIdle() const
{
    interactive->waitUntilIdle();
    background->waitUntilIdle();
}

std::uint64_t WorkerPool::posted() const
{
    return interactive->posted() + background->posted();
}

std::shared_ptr<Executor> WorkerPool::executor(WorkPriority priority) const
{
    return priority == WorkPriority::interactive ? interactive : background;
}

} // namespace tw
