#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Runtime/MainContext.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

namespace tw {
class EngineRuntime;
}

namespace tw::test {

/// A task under test: its outcome, and a handle to stop it.
template <class T>
class Started {
    using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

    struct State {
        std::stop_source stop;
        std::optional<Value> value;
        std::exception_ptr failure;
    };

public:
    bool isDone() const { return state->value || state->failure; }

    bool failed() const { return state->failure != nullptr; }

    void stop() const { state->stop.request_stop(); }

    /// Returns its result or throws its exception. The task must be done.
    T value() const
    {
        requireValue();
        if constexpr (!std::is_void_v<T>)
            return *state->value;
    }

    /// The same, moved out. To be called once.
    T take() const
    {
        requireValue();
        if constexpr (!std::is_void_v<T>)
            return std::move(*state->value);
    }

private:
    friend class TestLoop;

    void requireValue() const
    {
        if (state->failure)
            std::rethrow_exception(state->failure);
        if (!state->value)
            throw std::logic_error("the task under test is still running");
    }

    static Task<void> watch(std::shared_ptr<State> state, Task<T> task)
    {
        try {
            auto running = std::move(task);
            if constexpr (std::is_void_v<T>) {
                co_await std::move(running);
                state->value.emplace();
            } else {
                auto result = co_await std::move(running);
                state->value.emplace(std::move(result));
            }
        } catch (...) {
            state->failure = std::current_exception();
        }
    }

    std::shared_ptr<State> state = std::make_shared<State>();
};

/// A main context that the test drives: the test's thread is the main thread.
class TestLoop {
public:
    TestLoop();

    /// Destroys queued work.
    ~TestLoop();

    TestLoop(TestLoop const &) = delete;
    TestLoop &operator=(TestLoop const &) = delete;

    std::shared_ptr<MainContext> const &context() const noexcept { return main; }

    /// Starts a task on the loop. It runs when the loop is driven.
    template <class T>
    Started<T> start(Task<T> task)
    {
        Started<T> started;
        spawn({main, started.state->stop.get_token()}, Started<T>::watch(started.state, std::move(task)));
        return started;
    }

    /// Runs until nothing is queued. For tests in which everything lives on this loop.
    void drain();

    /// Runs until nothing is queued, and nothing is under way on the threads of the engine that would queue something.
    /// At the end of a test: a task whose result comes when the loop is gone is never freed.
    void settle(EngineRuntime &engine);

    /// What only a hang reaches, for a test whose work takes minutes.
    void setHangLimit(std::chrono::minutes limit) { hangLimit = limit; }

    /// Runs until `condition` holds, and sleeps while there is no work. Fails the test and returns false after the
    /// hang limit.
    bool runUntil(std::function<bool()> condition);

    /// Starts a task, waits for its end and returns its result.
    template <class T>
    T run(Task<T> task)
    {
        auto const started = start(std::move(task));
        runUntil([&] { return started.isDone(); });
        return started.take();
    }

private:
    std::size_t runPending();

    /// A loaded machine with sanitizers is allowed to be very slow.
    std::chrono::minutes hangLimit{2};

    std::size_t ran = 0; ///< pieces of work so far

    std::mutex mutex;
    std::condition_variable woken;
    // Under the mutex.
    bool hasWork = false;

    std::shared_ptr<MainContext> main;
};

} // namespace tw::test
