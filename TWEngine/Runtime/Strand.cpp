#include "TWEngine/Runtime/Strand.h"

#include <chrono>
#include <mutex>
#include <vector>

namespace tw {

namespace {

thread_local Executor const *runningStrand = nullptr;

/// Longer than the steps of a request take together, shorter than anything that a person notices.
constexpr std::chrono::milliseconds longestTurn{1};

} // namespace

class Strand::Queue final : public Executor, public std::enable_shared_from_this<Queue> {
public:
    explicit Queue(std::shared_ptr<Executor> executor) : threads(std::move(executor)) {}

    void post(Work work) override
    {
        {
            std::lock_guard const lock(mutex);
            waiting.push_back(std::move(work));
            if (std::exchange(scheduled, true))
                return;
        }
        schedule();
    }

private:
    /// The strand's turn on its threads. If they let go of it, they have ended, and so has what waits for them.
    class Turn {
    public:
        explicit Turn(std::shared_ptr<Queue> strand) : queue(std::move(strand)) {}

        Turn(Turn &&) noexcept = default;
        Turn &operator=(Turn &&) = delete;

        ~Turn()
        {
            if (queue)
                queue->letGo();
        }

        void operator()()
        {
            auto const strand = std::exchange(queue, nullptr);
            strand->runTurn();
        }

    private:
        std::shared_ptr<Queue> queue;
    };

    void schedule() { threads->post(Turn(shared_from_this())); }

    void letGo()
    {
        // Destroyed at the end, without the lock: what it held may post again.
        std::vector<Work> dropped;
        std::lock_guard const lock(mutex);
        dropped.swap(waiting);
        scheduled = false;
    }

    /// Runs what is waiting and what that posts in turn: a chain of short steps then wakes one thread, once. When the
    /// time is over it queues up again, so that a busy strand does not keep a thread from the others.
    void runTurn()
    {
        auto const end = std::chrono::steady_clock::now() + longestTurn;
        while (runBatch()) {
            if (std::chrono::steady_clock::now() >= end)
                return schedule();
        }
    }

    /// Runs what is waiting now. False if nothing is left; the turn is over then.
    bool runBatch()
    {
        std::vector<Work> batch;
        {
            std::lock_guard const lock(mutex);
            batch.swap(waiting);
        }
        auto const *const outer = std::exchange(runningStrand, this);
        for (auto &work : batch) {
            work();
            work = nullptr; // what it held is let go here, before the next one runs
        }
        runningStrand = outer;
        std::lock_guard const lock(mutex);
        scheduled = !waiting.empty();
        return scheduled;
    }

    std::shared_ptr<Executor> const threads;

    std::mutex mutex;
    // Under the mutex.
    std::vector<Work> waiting;
    bool scheduled = false;
};

Strand::Strand(std::shared_ptr<Executor> threads) : queue(std::make_shared<Queue>(std::move(threads))) {}

bool Strand::runsHere() const noexcept
{
    return runningStrand == queue.get();
}

} // namespace tw
