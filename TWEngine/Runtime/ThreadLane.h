#pragma once

#include "TWCore/Async/Executor.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace tw {

/// How urgent a piece of blocking work is.
enum class WorkPriority {
    interactive, ///< a person is waiting for it
    background,  ///< nobody is; it may be slowed down in favour of everything else on the machine
};

/// Some threads with one queue, for work that blocks.
///
/// A thread is started when work finds no idle one. Background threads run at a low scheduling and I/O priority.
///
/// Threads: every operation may be called from anywhere; `close` and `waitUntilIdle` not on a thread of the lane.
/// Lifetime: shared. `close` before the last reference goes; work that is posted later is let go without having run.
class ThreadLane final : public Executor {
public:
    struct Limits {
        std::size_t threads; ///< 0: work is a bug
        /// After which a thread without work ends. Zero: never.
        std::chrono::milliseconds idleTime{0};
    };

    ThreadLane(WorkPriority urgency, Limits bounds) : priority(urgency), limits(bounds) {}

    void post(Work work) override;

    /// Blocks until nothing is queued or running.
    void waitUntilIdle();

    /// How many pieces of work were posted so far.
    std::uint64_t posted();

    /// Whether new work would wait for other work.
    bool isFull();

    /// Whether it has no work and no thread.
    bool isAtRest();

    /// Runs what is queued, and ends the threads. Work that is posted meanwhile is run or let go.
    void close();

private:
    enum class Stage { open, draining, closed };

    // Called with the mutex held.
    void startThread();
    void retireThisThread();
    bool waitForWork(std::unique_lock<std::mutex> &lock);

    void serve();

    // Constant after construction.
    WorkPriority const priority;
    Limits const limits;

    std::mutex mutex;
    std::condition_variable wakeUp;
    std::condition_variable cameToRest;
    // Under the mutex.
    std::deque<Work> queue;
    std::vector<std::thread> threads;
    std::vector<std::thread> retired; ///< have nothing left to do, and are joined by the next start or by `close`
    std::size_t idle = 0;
    std::size_t running = 0;
    std::uint64_t postedCount = 0;
    Stage stage = Stage::open;
};

} // namespace tw
