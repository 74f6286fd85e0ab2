#pragma once

#include "TWCore/Async/Outcome.h"
#include "TWEngine/Runtime/Completion.h"

namespace tw {

/// A result that several tasks wait for. It is kept for later waiters.
///
/// Threads: all operations may be called from anywhere.
/// Cancellation: stopping one waiter does not affect the others.
template <class T>
class SharedCompletion {
public:
    /// To be called once.
    void settle(Outcome<T> result)
    {
        std::vector<Waiter> woken;
        {
            std::lock_guard const lock(mutex);
            outcome = std::move(result);
            woken.swap(waiters);
        }
        for (auto const &waiter : woken)
            waiter->succeed({});
    }

    bool isSettled()
    {
        std::lock_guard const lock(mutex);
        return hasOutcome();
    }

    /// Waits for the result and returns a copy. Throws the failure, or Cancelled if the waiter is stopped first.
    static Task<T> wait(std::shared_ptr<SharedCompletion> self)
    {
        auto const waiter = self->enlist();
        if (waiter) {
            try {
                co_await Completion<Done>::wait(waiter);
            } catch (Cancelled const &) {
                self->leave(waiter);
                throw;
            }
        }
        co_return self->answer();
    }

private:
    using Waiter = std::shared_ptr<Completion<Done>>;

    bool hasOutcome() const { return outcome.value || outcome.failure; }

    /// A place in the queue, or null if there is an outcome already.
    Waiter enlist()
    {
        std::lock_guard const lock(mutex);
        if (hasOutcome())
            return nullptr;
        return waiters.emplace_back(std::make_shared<Completion<Done>>());
    }

    void leave(Waiter const &waiter)
    {
        std::lock_guard const lock(mutex);
        std::erase(waiters, waiter);
    }

    T answer()
    {
        std::lock_guard const lock(mutex);
        if (outcome.failure)
            std::rethrow_exception(outcome.failure);
        if constexpr (!std::is_void_v<T>)
            return *outcome.value;
    }

    std::mutex mutex;
    // Under the mutex.
    Outcome<T> outcome;
    std::vector<Waiter> waiters;
};

} // namespace tw
