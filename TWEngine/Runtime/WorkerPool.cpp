#include "TWEngine/Runtime/WorkerPool.h"

namespace tw {

WorkerPool::WorkerPool(Limits limits)
    : interactive(
          std::make_shared<ThreadLane>(WorkPriority::interactive, ThreadLane::Limits{.threads = limits.interactive})),
      background(
          std::make_shared<ThreadLane>(WorkPriority::background, ThreadLane::Limits{.threads = limits.background}))
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
