#pragma once

#include "TWCore/Async/Executor.h"

#include <mutex>
#include <vector>

namespace tw {

/// The executor of windows and controllers: a queue that the event loop of the toolkit empties.
///
/// `wake` notifies the loop of new work: once for all work that is posted before the next `runPending`.
///
/// Threads: `post` may be called from anywhere, everything else from the main thread only.
/// Lifetime: shared with every task that resumes on it, so it may outlive the event loop; the owner of the loop closes
/// it.
class MainContext final : public Executor {
public:
    /// `wake` is called on the posting thread, one call at a time. It must make the event loop call `runPending` later,
    /// and must neither call `runPending` nor use this context.
    explicit MainContext(std::function<void()> wake);

    void post(Work work) override;

    /// Runs the work that is queued now. Work that is posted meanwhile waits for the next call, so that input is
    /// handled in between. Returns the number of pieces of work that ran. Must not be called from work.
    std::size_t runPending();

    /// Destroys queued work, and work that is posted later. `wake` is not called after this returns.
    void close();

private:
    std::function<void()> const wake;

    std::mutex mutex;
    // Under the mutex.
    std::vector<Work> queue;
    bool isClosed = false;
};

} // namespace tw
