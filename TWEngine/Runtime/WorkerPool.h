#pragma once

#include "TWEngine/Runtime/Completion.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace tw {

/// How urgent a piece of blocking work is.
enum class WorkPriority {
    interactive, ///< a person is waiting for it
    background,  ///< nobody is; it may be slowed down in favour of everything else on the machine
};

/// Threads for work that blocks: file system calls, and whatever else must not stall an executor.
///
/// The two priorities have threads of their own: interactive work never queues behind background work, and the
/// background threads run at a low scheduling and I/O priority, so that they do not slow the person down either.
/// Threads are started when they are first needed.
///
/// Threads: `run` and the executors may be used from anywhere.
/// Lifetime: the destructor runs what is queued and joins; it must not be called on one of the pool's own threads.
/// The executors may be kept longer; work that they get then is let go without having run.
class WorkerPool {
public:
    /// The most threads of each priority. None: work of that priority is a bug.
    struct Limits {
        std::size_t interactive;
        std::size_t background;
    };

    explicit WorkerPool(Limits limits);
    ~WorkerPool();

    WorkerPool(WorkerPool const &) = delete;
    WorkerPool &operator=(WorkerPool const &) = delete;

    /// Runs `work`, which may block, on a thread of that priority, and answers what it returned or throws what it
    /// threw.
    ///
    /// Cancellation: a stopped caller goes on with Cancelled at once, and work that has not begun is skipped; work
    /// that has begun cannot be called off, and its result is dropped.
    template <class Function>
    Task<std::invoke_result_t<Function>> run(WorkPriority priority, Function work) const
    {
        return runOn<std::invoke_result_t<Function>>(executor(priority), std::move(work));
    }

    /// Blocks until nothing is queued or running. Not for one of the pool's own threads.
    void waitUntilIdle() const;

    /// How many pieces of work were posted so far.
    std::uint64_t posted() const;

    /// The pool's threads of that priority as an executor, for strands to stand on.
    std::shared_ptr<Executor> executor(WorkPriority priority) const;

private:
    class Lane;

    template <class Result>
    static Task<Result> runOn(std::shared_ptr<Executor> lane, std::move_only_function<Result()> work)
    {
        using Value = std::conditional_t<std::is_void_v<Result>, Done, Result>;
        auto const context = co_await currentContext();
        auto const completion = std::make_shared<Completion<Value>>();
        lane->post([completion, stop = context.stop, work = std::move(work)]() mutable {
            if (stop.stop_requested())
                return; // the waiter has gone on with Cancelled
            perform<Result>(*completion, work);
        });
        if constexpr (std::is_void_v<Result>) {
            co_await Completion<Value>::wait(completion);
        } else {
            auto result = co_await Completion<Value>::wait(completion);
            co_return result;
        }
    }

    /// Takes `work` out of where it lies, so that what it holds is gone when the caller goes on.
    template <class Result, class Value>
    static void perform(Completion<Value> &completion, std::move_only_function<Result()> &work)
    {
        std::exception_ptr failure;
        try {
            if constexpr (std::is_void_v<Result>) {
                std::exchange(work, nullptr)();
                completion.succeed({});
            } else {
                auto result = std::exchange(work, nullptr)();
                completion.succeed(std::move(result));
            }
        } catch (...) {
            failure = std::current_exception();
        }
        // Behind the handler, which holds the exception too: from here on it is the waiter's alone.
        if (failure)
            completion.fail(std::move(failure));
    }

    std::shared_ptr<Lane> interactive;
    std::shared_ptr<Lane> background;
};

} // namespace tw
