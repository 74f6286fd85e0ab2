#pragma once

#include "TWCore/Async/OnExecutor.h"

namespace tw {

/// Runs work one piece at a time, in order, on the threads of another executor. Every serialised object has a strand.
///
/// A strand is no lock across a suspension: while one task waits, others run. A cheap value; copies are the same
/// strand.
///
/// Threads: may be used from anywhere.
/// Lifetime: work that is posted after the threads have ended is destroyed without running.
class Strand {
public:
    explicit Strand(std::shared_ptr<Executor> threads);

    std::shared_ptr<Executor> const &executor() const noexcept { return queue; }

    /// True if the calling thread runs work of this strand. For assertions.
    bool runsHere() const noexcept;

private:
    class Queue;

    std::shared_ptr<Executor> queue;
};

/// Runs `work` on the strand and resumes the caller on the caller's executor.
template <class T>
Task<T> onStrand(Strand strand, Task<T> work)
{
    return onExecutor(strand.executor(), std::move(work));
}

} // namespace tw
