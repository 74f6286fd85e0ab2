#include "TWEngine/Runtime/MainContext.h"

namespace tw {

MainContext::MainContext(std::function<void()> wakeLoop) : wake(std::move(wakeLoop)) {}

void MainContext::post(Work work)
{
    std::lock_guard const lock(mutex);
    if (isClosed)
        return;
    queue.push_back(std::move(work));
    // Under the lock, so that no call is under way when the loop's owner has closed the context.
    if (queue.size() == 1)
        wake();
}

std::size_t MainContext::runPending()
{
    std::vector<Work> batch;
    {
        std::lock_guard const lock(mutex);
        batch.swap(queue);
    }
    for (auto &work : batch) {
        work();
        work = nullptr; // what it held is let go before the next one runs
    }
    return batch.size();
}

void MainContext::close()
{
    // Destroyed at the end, without the lock: what it held may post again.
    std::vector<Work> dropped;
    std::lock_guard const lock(mutex);
    isClosed = true;
    dropped.swap(queue);
}

} // namespace tw
