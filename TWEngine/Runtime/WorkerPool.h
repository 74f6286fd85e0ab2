#pragma once

#include "TWEngine/Runtime/BlockingCall.h"
#include "TWEngine/Runtime/ThreadLane.h"

namespace tw {

/// Threads for work that blocks and is no call on a file system: FileLanes has those.
///
/// The two priorities have threads of their own: interactive work never queues behind background work.
/// Threads are started when they are first needed.
///
/// Threads: `run` and the executors may be used from anywhere.
/// Lifetime: the destructor runs what is queued and joins; it must not be called on one of the pool's own threads.
/// The executors may be kept longer; work that they get then is let go without having run.
class WorkerPool {
public:
    /// The most threads of each priority. None: work of that priority is a bug.
    struct Limits {
        std::size_t interactive;
        std::size_t background;
    };

    explicit WorkerPool(Limits limits);
    ~WorkerPool();

    WorkerPool(WorkerPool const &) = delete;
    WorkerPool &operator=(WorkerPool const &) = delete;

    /// Runs `work`, which may block, on a thread of that priority: a `blockingCall`.
    template <class Function>
    Task<std::invoke_result_t<Function>> run(WorkPriority priority, Function work) const
    {
        return blockingCall<std::invoke_result_t<Function>>(
            [lane = executor(priority)](Work posted) { lane->post(std::move(posted)); }, std::move(work));
    }

    /// Blocks until nothing is queued or running. Not for one of the pool's own threads.
    void waitUntilIdle() const;

    /// How many pieces of work were posted so far.
    std::uint64_t posted() const;

    /// The pool's threads of that priority as an executor, for strands to stand on.
    std::shared_ptr<Executor> executor(WorkPriority priority) const;

private:
    std::shared_ptr<ThreadLane> interactive;
    std::shared_ptr<ThreadLane> background;
};

} // namespace tw
