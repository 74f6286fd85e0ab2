#pragma once

#include <functional>
#include <memory>
#include <stop_token>

namespace tw {

/// One piece of work, run once.
using Work = std::move_only_function<void()>;

/// A place where work runs: the main context, a strand, a pool.
///
/// Threads: `post` may be called from anywhere.
/// Lifetime: shared; every task that resumes there keeps the executor alive. An executor whose threads or loop have
/// ended destroys work without running it. A task in flight would leak with everything that it holds, so owners end
/// their tasks before their executors end. Errors: work must not throw; the process would end.
class Executor {
public:
    virtual ~Executor() = default;

    /// Runs `work` later, never inside the call. Work posted from one thread starts in the order of its posting.
    virtual void post(Work work) = 0;
};

/// What a task inherits from its awaiting task: where it runs, and what cancels it.
struct TaskContext {
    std::shared_ptr<Executor> executor;
    std::stop_token stop;
};

} // namespace tw
