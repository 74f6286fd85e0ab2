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
/// Lifetime: shared; whoever is to be resumed there keeps it alive. An executor whose threads or loop have ended lets
/// go of work without running it. A task that had begun is lost by that, with all that it holds, which is why owners
/// end their tasks before their executors end.
/// Errors: work does not throw; there is nobody to hear it, and the process would end.
class Executor {
public:
    virtual ~Executor() = default;

    /// Runs `work` later, never inside the call. Work posted from one thread starts in the order of its posting.
    virtual void post(Work work) = 0;
};

/// What a task inherits from the one that awaits it: where it runs, and who may call it off.
struct TaskContext {
    std::shared_ptr<Executor> executor;
    std::stop_token stop;
};

} // namespace tw
