#include "TWEngine/Runtime/EngineRuntime.h"

#include "TWEngine/Runtime/SystemClock.h"

namespace tw {

namespace {

/// Blocking calls mostly wait for a disk or a dead network mount, not for a core: enough threads that some hung
/// mounts do not keep the other folders from opening.
constexpr WorkerPool::Limits blockingLimits{.interactive = 8, .background = 2};

/// Strand work is short and never blocks: two threads, so that one long parse does not hold up the other pane.
constexpr WorkerPool::Limits strandLimits{.interactive = 2, .background = 0};

} // namespace

EngineRuntime::EngineRuntime()
    : systemClock(std::make_shared<SystemClock>(ioThread)), blockingWork(blockingLimits), strandThreads(strandLimits)
{
}

EngineRuntime::~EngineRuntime()
{
    // A scan may have outlived its Browser. What ends on a worker goes on on a strand, and the other way round, so
    // both have to be found at rest with nothing posted in between: counted when it is posted, since work that is
    // queued behind one's back is not begun yet.
    auto const posted = [this] { return blockingWork.posted() + strandThreads.posted(); };
    std::uint64_t before = 0;
    do {
        before = posted();
        blockingWork.waitUntilIdle();
        strandThreads.waitUntilIdle();
    } while (posted() != before);
}

} // namespace tw
