#pragma once

#include "TWCore/Async/Clock.h"
#include "TWEngine/Runtime/DirectoryEvents.h"
#include "TWEngine/Runtime/FileLanes.h"
#include "TWEngine/Runtime/IoThread.h"
#include "TWEngine/Runtime/Strand.h"
#include "TWEngine/Runtime/WorkerPool.h"

namespace tw {

/// Owns all threads of the engine. The program makes one, passes it down by reference, and destroys it last.
///
/// Lifetime: outlives every object that was made with it. Owners are shut down before; the destructor then waits until
/// lanes, workers and strands are idle, and joins all threads. A task that still waits for a timer or a pipe is
/// dropped.
class EngineRuntime {
public:
    EngineRuntime();
    ~EngineRuntime();

    EngineRuntime(EngineRuntime const &) = delete;
    EngineRuntime &operator=(EngineRuntime const &) = delete;

    /// A strand for a new serialised object.
    Strand makeStrand() const { return Strand(strandThreads.executor(WorkPriority::interactive)); }

    /// For calls on file systems of this machine.
    FileLanes &files() noexcept { return fileLanes; }

    /// For other work that blocks.
    WorkerPool &workers() noexcept { return blockingWork; }

    /// For the listing store: its calls block too, and wait for nothing else.
    WorkerPool &storeWorkers() noexcept { return storeThreads; }

    IoThread &io() noexcept { return ioThread; }

    DirectoryEvents &directoryEvents() noexcept { return events; }

    std::shared_ptr<Clock> const &clock() const noexcept { return systemClock; }

    /// Until nothing is queued or under way on the lanes, workers and strands. What waits for a timer, a pipe or the
    /// main context is not waited for. Not on one of those threads.
    void waitUntilIdle();

private:
    // In the order of dependency: work of a strand may wait for a worker or a timer, so the threads of strands end
    // first.
    IoThread ioThread;
    DirectoryEvents events{ioThread};
    std::shared_ptr<Clock> const systemClock;
    FileLanes fileLanes;
    WorkerPool blockingWork;
    WorkerPool storeThreads;
    WorkerPool strandThreads;
};

} // namespace tw
