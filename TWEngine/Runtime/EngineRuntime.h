#pragma once

#include "TWCore/Async/Clock.h"
#include "TWEngine/Runtime/IoThread.h"
#include "TWEngine/Runtime/Strand.h"
#include "TWEngine/Runtime/WorkerPool.h"

namespace tw {

/// All threads of the engine: made once by the program, handed down by reference, destroyed last.
///
/// Lifetime: outlives every object that was made with it. Owners are shut down (awaited) before; the destructor then
/// waits until workers and strands have come to rest together, and joins all threads. What still waits for a timer or
/// a pipe at that point is dropped.
class EngineRuntime {
public:
    EngineRuntime();
    ~EngineRuntime();

    EngineRuntime(EngineRuntime const &) = delete;
    EngineRuntime &operator=(EngineRuntime const &) = delete;

    /// A new serialised object's ground.
    Strand makeStrand() const { return Strand(strandThreads.executor(WorkPriority::interactive)); }

    /// For work that blocks.
    WorkerPool &workers() noexcept { return blockingWork; }

    IoThread &io() noexcept { return ioThread; }

    std::shared_ptr<Clock> const &clock() const noexcept { return systemClock; }

private:
    // In the order of need: a strand's work may wait for a worker or a timer, so its threads go first.
    IoThread ioThread;
    std::shared_ptr<Clock> const systemClock;
    WorkerPool blockingWork;
    WorkerPool strandThreads;
};

} // namespace tw
