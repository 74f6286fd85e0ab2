#pragma once

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Task.h"

#include <mutex>
#include <variant>

namespace tw {

/// A result that one task waits for and that somebody else, on any thread, provides.
///
/// Every suspension of the runtime is built on it, so that the race between the result, the waiting and the
/// cancellation is decided in this one place: the first of `succeed`, `fail` and a stop request wins, and the waiter
/// goes on with that, on its own executor.
///
/// Threads: all operations may be called from anywhere; one task waits, once.
/// Lifetime: shared between the waiter and whoever provides. If nobody ever provides, the waiter waits for its stop.
template <class T>
class Completion {
public:
    /// False if there was an outcome already.
    bool succeed(T value) { return settle(Outcome(std::in_place_index<1>, std::move(value))); }

    /// False if there was an outcome already.
    bool fail(std::exception_ptr failure) { return settle(Outcome(std::in_place_index<2>, std::move(failure))); }

    /// The outcome, awaited. Throws Cancelled when the waiter is stopped before there is one.
    static Task<T> wait(std::shared_ptr<Completion> self)
    {
        // Lives in the frame, and dies there before the outcome is read.
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
            // As soon as the waiter is known, another thread may resume and destroy the frame in which this
            // awaiter lies: the completion is kept alive from here, and nothing of the frame is touched after.
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
        // Taken out, like a value: the exception dies with the waiter, and not on the thread of whoever provided it.
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

/// The value of a completion that says nothing but "now".
struct Done {};

} // namespace tw
