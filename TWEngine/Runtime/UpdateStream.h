#pragma once

#include "TWEngine/Runtime/Completion.h"

#include <deque>

namespace tw {

/// The receiving end of an unbounded stream of values, read by one task.
///
/// Either side can end it. Values that were sent before `finish`, or before the last sender was destroyed, are still
/// received. When the receiving end is destroyed, the callback given to `make` is called once, and later sends are
/// ignored.
///
/// Threads: the two ends may live on different threads; each end is used by one thread at a time.
template <class T>
class UpdateStream {
    struct State {
        std::mutex mutex;
        // Under the mutex.
        std::deque<T> queue;
        std::shared_ptr<Completion<Done>> waiter;
        bool finished = false;
        std::move_only_function<void()> onDropped;

        void wake(std::unique_lock<std::mutex> lock)
        {
            auto const toWake = std::exchange(waiter, nullptr);
            lock.unlock();
            if (toWake)
                toWake->succeed({});
        }

        void finish()
        {
            std::unique_lock lock(mutex);
            finished = true;
            // Destroyed without the lock: the value may use the stream.
            auto const unused = std::move(onDropped);
            wake(std::move(lock));
        }
    };

    /// Shared by all copies of a sender, so that the last copy ends the stream.
    struct Sending {
        std::shared_ptr<State> const state;

        explicit Sending(std::shared_ptr<State> stream) : state(std::move(stream)) {}

        Sending(Sending const &) = delete;
        Sending &operator=(Sending const &) = delete;

        ~Sending() { state->finish(); }
    };

public:
    /// The sending end. A cheap value; copies send into the same stream.
    class Sender {
    public:
        /// Threads: may be called from anywhere. Does nothing after `finish`, or without a receiving end.
        void send(T value) const
        {
            auto &shared = *sending->state;
            std::unique_lock lock(shared.mutex);
            if (shared.finished)
                return;
            shared.queue.push_back(std::move(value));
            shared.wake(std::move(lock));
        }

        /// Ends the stream after the values that were sent so far. A second call does nothing.
        void finish() const { sending->state->finish(); }

    private:
        friend UpdateStream;

        explicit Sender(std::shared_ptr<State> shared) : sending(std::make_shared<Sending>(std::move(shared))) {}

        std::shared_ptr<Sending> sending;
    };

    struct Ends;

    /// `onDropped` is called once if the receiving end is destroyed before the stream is finished, on that thread.
    static Ends make(std::move_only_function<void()> onDropped)
    {
        auto const state = std::make_shared<State>();
        state->onDropped = std::move(onDropped);
        return {Sender(state), UpdateStream(state)};
    }

    UpdateStream(UpdateStream &&) noexcept = default;
    UpdateStream &operator=(UpdateStream &&) = delete;

    ~UpdateStream()
    {
        if (!state)
            return;
        std::unique_lock lock(state->mutex);
        auto tellSender = std::move(state->onDropped);
        auto const discarded = std::exchange(state->queue, {});
        state->finished = true;
        state->wake(std::move(lock));
        if (tellSender)
            tellSender();
    }

    /// The next value, or nothing at the end. Throws Cancelled if the waiting task is stopped; no value is lost.
    Task<std::optional<T>> next() { return nextOf(state); }

private:
    explicit UpdateStream(std::shared_ptr<State> shared) : state(std::move(shared)) {}

    static Task<std::optional<T>> nextOf(std::shared_ptr<State> state)
    {
        for (;;) {
            auto const waiter = waiterUnlessReady(*state);
            if (!waiter)
                break;
            co_await Completion<Done>::wait(waiter);
        }
        co_return takeFront(*state);
    }

    static std::shared_ptr<Completion<Done>> waiterUnlessReady(State &state)
    {
        std::lock_guard const lock(state.mutex);
        if (!state.queue.empty() || state.finished)
            return nullptr;
        state.waiter = std::make_shared<Completion<Done>>();
        return state.waiter;
    }

    static std::optional<T> takeFront(State &state)
    {
        std::lock_guard const lock(state.mutex);
        if (state.queue.empty())
            return std::nullopt;
        std::optional<T> front(std::move(state.queue.front()));
        state.queue.pop_front();
        return front;
    }

    std::shared_ptr<State> state;
};

template <class T>
struct UpdateStream<T>::Ends {
    Sender sender;
    UpdateStream stream;
};

} // namespace tw
