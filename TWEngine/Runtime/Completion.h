#pragma once

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Task.h"

#include <mutex>
#include <variant>

namespace tw {

/// A result that one task waits for and that another thread provides.
///
/// Every suspension of the runtime is built on it, so that the race between result, wait and cancellation is decided in
/// one place: the first of `succeed`, `fail` and a stop request wins, and the waiter resumes with it on its own
/// executor.
///
/// Threads: all operations may be called from anywhere; one task waits, once.
/// Lifetime: shared between waiter and provider. Without a result, the waiter waits until it is stopped.
template <class T>
class Completion {
public:
    /// False if there is an outcome already.
    bool succeed(T value) { return settle(Outcome(std::in_place_index<1>, std::move(value))); }

    /// False if there is an outcome already.
    bool fail(std::exception_ptr failure) { return settle(Outcome(std::in_place_index<2>, std::move(failure))); }

    /// Waits for the outcome. Throws Cancelled if the waiter is stopped first.
    static Task<T> wait(std::shared_ptr<Completion> self)
    {
        // In the frame, and destroyed before the outcome is read.
        co_await Awaiter{self, std::nullopt};
        co_return self->take();
    }

private:
    using Outcome = std::variant<std::monostate, T, std::exception_ptr>;

    struct Stopper {
        Completion *completion;

        void operator()() const { completion->fail(std::make_exception_ptr(Cancelled())); }
    };

    struct Awaiter {
        std::shared_ptr<Completion> completion;
        std::optional<std::stop_callback<Stopper>> onStop;

        bool await_ready() const noexcept { return false; }

        template <class Promise>
        bool await_suspend(std::coroutine_handle<Promise> caller)
        {
            // Once the waiter is registered, another thread may resume and destroy the frame that holds this awaiter:
            // we keep the completion alive, and do not touch the frame any more.
            auto const keep = completion;
            auto const &context = caller.promise().context;
            onStop.emplace(context.stop, Stopper{keep.get()});
            std::lock_guard const lock(keep->mutex);
            if (keep->outcome.index() != 0)
                return false;
            keep->waiter = caller;
            keep->executor = context.executor;
            return true;
        }

        void await_resume() noexcept { onStop.reset(); }
    };

    bool settle(Outcome result)
    {
        std::coroutine_handle<> toResume;
        std::shared_ptr<Executor> where;
        {
            std::lock_guard const lock(mutex);
            if (outcome.index() != 0)
                return false;
            outcome = std::move(result);
            toResume = std::exchange(waiter, {});
            where = std::move(executor);
        }
        if (toResume)
            where->post([toResume] { toResume.resume(); });
        return true;
    }

    T take()
    {
        std::lock_guard const lock(mutex);
        // Moved out, like a value: the waiter destroys the exception, not the thread of the provider.
        if (auto *failure = std::get_if<2>(&outcome))
            std::rethrow_exception(std::exchange(*failure, nullptr));
        return std::move(std::get<1>(outcome));
    }

    std::mutex mutex;
    // Under the mutex.
    Outcome outcome;
    std::coroutine_handle<> waiter;
    std::shared_ptr<Executor> executor;
};

/// The value of a completion without a result.
struct Done {};

} // namespace tw
