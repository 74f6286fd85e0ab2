#pragma once

#include "TWCore/Async/Executor.h"

#include <mutex>
#include <vector>

namespace tw {

/// The executor of windows and controllers: a queue that somebody else's event loop empties.
///
/// The loop is told through `wake` when there is something to do: once for a batch, however much is posted before
/// the loop gets round to `runPending`.
///
/// Threads: `post` may be called from anywhere, the rest from the main thread only.
/// Lifetime: shared with all that is to be resumed on it, so it may outlive the event loop; the loop's owner closes it.
class MainContext final : public Executor {
public:
    /// `wake` is called on the posting thread, one call at a time, and must make the event loop call `runPending`
    /// later, never inside. It does not use this context itself.
    explicit MainContext(std::function<void()> wake);

    void post(Work work) override;

    /// Runs what is queued now; what that posts in turn waits for the next call, so that input gets in between.
    /// Answers how many pieces of work ran.
    /// Not to be called from inside of work.
    std::size_t runPending();

    /// Lets go of what is queued and of whatever is still posted; `wake` is not called any more when this returns.
    void close();

private:
    std::function<void()> const wake;

    std::mutex mutex;
    // Under the mutex.
    std::vector<Work> queue;
    bool isClosed = false;
};

} // namespace tw
