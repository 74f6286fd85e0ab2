#include "TWCore/Async/WhenAll.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/ChildTask.h"

#include <algorithm>
#include <atomic>

namespace tw {

namespace {

/// What the runners of one `whenAll` share. The executor may have several threads.
struct Batch {
    std::vector<Task<void>> tasks;
    std::stop_source stop;
    std::atomic<std::size_t> next = 0;
    std::atomic<bool> hasFailed = false;
    std::exception_ptr firstFailure; ///< written by the one that set `hasFailed`, read when all have ended
};

/// Takes one task after the other until none is left or one has failed.
Task<void> runInTurn(std::shared_ptr<Batch> batch)
{
    while (!batch->stop.stop_requested()) {
        auto const place = batch->next++;
        if (place >= batch->tasks.size())
            co_return;
        auto outcome = co_await outcomeOf(std::move(batch->tasks[place]).withStop(batch->stop.get_token()));
        if (!outcome.failure)
            continue;
        if (!batch->hasFailed.exchange(true))
            batch->firstFailure = std::move(outcome.failure);
        batch->stop.request_stop();
    }
}

} // namespace

Task<void> whenAll(std::vector<Task<void>> tasks, std::size_t atOnce)
{
    check(atOnce > 0, "whenAll runs at least one task at a time");
    auto const context = co_await currentContext();
    auto const batch = std::make_shared<Batch>();
    batch->tasks = std::move(tasks);
    std::stop_callback const passOn(context.stop, [batch] { batch->stop.request_stop(); });
    std::vector<ChildTask<void>> runners;
    auto const count = std::min(atOnce, batch->tasks.size());
    runners.reserve(count);
    for (std::size_t started = 0; started < count; ++started)
        runners.push_back(ChildTask<void>::start(context, runInTurn(batch)));
    for (auto const &runner : runners)
        co_await runner.join();
    if (batch->firstFailure)
        std::rethrow_exception(std::exchange(batch->firstFailure, nullptr));
    if (batch->next < batch->tasks.size())
        throw Cancelled(); // stopped before all had begun
}

} // namespace tw
