#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <thread>
#include <vector>

namespace tw {

/// Threads that a piece of blocking work starts for itself and joins before it returns.
///
/// Threads: one at a time.
class HelperThreads {
public:
    /// How many helpers there may be at a time, over all pieces of work that share the budget. Any thread.
    class Budget {
    public:
        explicit Budget(std::ptrdiff_t threads) : left(threads) {}

    private:
        friend class HelperThreads;

        std::atomic<std::ptrdiff_t> left;
    };

    /// `shared` outlives it.
    explicit HelperThreads(Budget &shared) : budget(shared) {}

    /// Waits for all helpers.
    ~HelperThreads();

    HelperThreads(HelperThreads const &) = delete;
    HelperThreads &operator=(HelperThreads const &) = delete;

    /// Runs `work`, which must not throw, on a thread of the caller's scheduling priority. False if there is none left.
    bool start(std::function<void()> work);

    std::size_t count() const noexcept { return threads.size(); }

private:
    Budget &budget;
    std::vector<std::thread> threads;
};

} // namespace tw
