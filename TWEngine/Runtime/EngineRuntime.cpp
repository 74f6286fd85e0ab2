#include "TWEngine/Runtime/EngineRuntime.h"

#include "TWEngine/Runtime/SystemClock.h"

namespace tw {

namespace {

/// Such calls mostly wait for another process, as the key store is one, and not for a core.
constexpr WorkerPool::Limits blockingLimits{.interactive = 8, .background = 2};

/// The store is serialised, so it needs one thread only.
constexpr WorkerPool::Limits storeLimits{.interactive = 1, .background = 0};

/// Strand work is short and never blocks: two threads, so that one long parse does not hold up the other pane.
constexpr WorkerPool::Limits strandLimits{.interactive = 2, .background = 0};

} // namespace

EngineRuntime::EngineRuntime()
    : systemClock(std::make_shared<SystemClock>(ioThread)),
      blockingWork(blockingLimits),
      storeThreads(storeLimits),
      strandThreads(strandLimits)
{
}

EngineRuntime::~EngineRuntime()
{
    waitUntilIdle(); // a scan may have outlived its Browser
}

void EngineRuntime::waitUntilIdle()
{
    // What ends on a thread that blocks goes on on a strand, and the other way round, so both have to be found at rest
    // with nothing posted in between: counted when it is posted, since work that is queued behind one's back is not
    // begun yet.
    auto const posted = [this] {
        return fileLanes.posted() + blockingWork.posted() + storeThreads.posted() + strandThreads.posted();
    };
    std::uint64_t before = 0;
    do {
        before = posted();
        fileLanes.waitUntilIdle();
        blockingWork.waitUntilIdle();
        storeThreads.waitUntilIdle();
        strandThreads.waitUntilIdle();
    } while (posted() != before);
}

} // namespace tw
