#pragma once

#include "TWCore/Async/OnExecutor.h"

namespace tw {

/// Runs work one piece at a time, in order, on the threads of another executor: the ground of a serialised object.
///
/// A strand is no lock across a suspension: while one task on it waits, others run. A cheap value; copies are the
/// same strand.
///
/// Threads: may be used from anywhere.
/// Lifetime: work that is posted when the threads have ended is let go without having run.
class Strand {
public:
    explicit Strand(std::shared_ptr<Executor> threads);

    std::shared_ptr<Executor> const &executor() const noexcept { return queue; }

    /// Whether the calling thread is running work of this strand. For checks of one's own assumptions.
    bool runsHere() const noexcept;

private:
    class Queue;

    std::shared_ptr<Executor> queue;
};

/// Runs `work` on the strand, and lets the caller go on where it was.
template <class T>
Task<T> onStrand(Strand strand, Task<T> work)
{
    return onExecutor(strand.executor(), std::move(work));
}

} // namespace tw
