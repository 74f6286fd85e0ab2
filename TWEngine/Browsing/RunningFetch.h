#pragma once

#include "TWCore/Provider/FileSystemProvider.h"
#include "TWEngine/Runtime/SharedTask.h"

#include <string>
#include <vector>

namespace tw {

/// What a fetch has to say to the callers that wait for it.
enum class FetchEnd {
    arrived, ///< the listing of the root is in the cache
    absent,  ///< the provider answered without the root, which is no directory
    stale,   ///< the answer is truncated or from before an invalidation, so the caller must fetch again
};

/// A fetch that runs, and the callers that wait for the listing of its root.
///
/// They wait for the first of two: the end of the fetch, or the listing by way of another one. A scan in the background
/// that has nearly ended must not be slower for them than for nobody.
///
/// Threads: `start`, `arrive` and the end of the fetch are on one executor; callers may wait from anywhere.
/// Lifetime: a cheap value; copies are the same fetch.
/// Errors: what the fetch throws is thrown to every caller.
class RunningFetch {
public:
    /// Starts `fetch` on `executor`.
    static RunningFetch start(std::shared_ptr<Executor> executor, std::string root, Task<FetchEnd> fetch)
    {
        auto first = std::make_shared<SharedCompletion<FetchEnd>>();
        auto task = SharedTask<FetchEnd>::start(std::move(executor), run(first, std::move(fetch)));
        return {std::move(root), std::move(first), std::move(task)};
    }

    std::string const &root() const noexcept { return path; }

    /// Passes the parts of a long listing to a caller, until the listing has come.
    void watch(PartTaker onPart) const { watchers->push_back(std::move(onPart)); }

    /// A part of the listing has come.
    void part(DirectorySnapshot const &snapshot) const
    {
        if (first->isSettled())
            return;
        for (auto const &watcher : *watchers)
            watcher(snapshot);
    }

    /// The listing has come by another way.
    void arrive() const
    {
        if (!first->isSettled())
            first->settle({.value = FetchEnd::arrived, .failure = {}});
    }

    /// Until the listing has come, or the fetch has ended without it.
    Task<FetchEnd> arrival() const { return SharedCompletion<FetchEnd>::wait(first); }

    /// Until the fetch itself has ended, in whichever way. Throws only Cancelled: if the fetch or the caller was.
    Task<void> end() const { return endOf(task); }

    void cancel() const { task.cancel(); }

private:
    using First = std::shared_ptr<SharedCompletion<FetchEnd>>;

    RunningFetch(std::string root, First firstOfTwo, SharedTask<FetchEnd> running)
        : path(std::move(root)), first(std::move(firstOfTwo)), task(std::move(running))
    {
    }

    static Task<void> endOf(SharedTask<FetchEnd> task)
    {
        try {
            co_await task.wait();
        } catch (Cancelled const &) {
            throw;
        } catch (...) {
            // The failure reached the callers that wait for the listing.
        }
    }

    static Task<FetchEnd> run(First first, Task<FetchEnd> fetch)
    {
        auto outcome = co_await outcomeOf(std::move(fetch));
        if (!first->isSettled())
            first->settle(outcome);
        co_return outcome.take();
    }

    std::string path;
    First first;
    SharedTask<FetchEnd> task;
    std::shared_ptr<std::vector<PartTaker>> watchers = std::make_shared<std::vector<PartTaker>>();
};

} // namespace tw
