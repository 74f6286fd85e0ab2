#pragma once

#include "TWCore/Async/Executor.h"
#include "TWCore/Check.h"

#include <coroutine>
#include <exception>
#include <optional>
#include <stop_token>
#include <utility>
#include <variant>

namespace tw {

template <class T>
class Task;

namespace detail {

/// The half of a promise that does not depend on the result: the context and the continuation.
struct TaskPromiseBase {
    TaskContext context;
    std::optional<std::stop_token> ownStop; ///< replaces the inherited token, see Task::withStop
    std::coroutine_handle<> continuation;   ///< none until it is awaited

    /// Resumes the awaiting task on this thread, without growing the stack.
    struct FinalAwaiter {
        bool await_ready() const noexcept { return false; }

        template <class Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> finished) const noexcept
        {
            return finished.promise().continuation;
        }

        void await_resume() const noexcept {}
    };

    std::suspend_always initial_suspend() const noexcept { return {}; }

    FinalAwaiter final_suspend() const noexcept { return {}; }

    void inherit(TaskContext const &caller)
    {
        context.executor = caller.executor;
        context.stop = ownStop ? *ownStop : caller.stop;
    }
};

template <class T>
struct TaskPromise : TaskPromiseBase {
    std::variant<std::monostate, T, std::exception_ptr> outcome;

    Task<T> get_return_object() noexcept;

    template <class Value>
    void return_value(Value &&value)
    {
        outcome.template emplace<1>(std::forward<Value>(value));
    }

    void unhandled_exception() noexcept { outcome.template emplace<2>(std::current_exception()); }

    T take()
    {
        if (auto *failure = std::get_if<2>(&outcome))
            std::rethrow_exception(std::move(*failure));
        return std::move(std::get<1>(outcome));
    }
};

template <>
struct TaskPromise<void> : TaskPromiseBase {
    std::exception_ptr failure;

    Task<void> get_return_object() noexcept;

    void return_void() const noexcept {}

    void unhandled_exception() noexcept { failure = std::current_exception(); }

    void take()
    {
        if (failure)
            std::rethrow_exception(std::move(failure));
    }
};

} // namespace detail

/// An asynchronous operation that starts when it is awaited and is awaited once.
///
/// It runs and ends on the executor of its awaiting task, and under the stop token of that task. What it throws is
/// thrown by the `co_await`. A task that is never awaited never runs.
///
/// Threads: one at a time; the executor decides which.
/// Lifetime: the task owns its frame, which holds all arguments. Destroying a task that was not awaited destroys them.
template <class T = void>
class [[nodiscard]] Task {
public:
    using promise_type = detail::TaskPromise<T>;

    Task(Task &&other) noexcept : frame(std::exchange(other.frame, {})) {}

    Task &operator=(Task &&other) noexcept
    {
        std::swap(frame, other.frame);
        return *this;
    }

    ~Task()
    {
        if (frame)
            frame.destroy();
    }

    /// The same task under `token` instead of the stop token of the awaiting task.
    Task withStop(std::stop_token token) &&
    {
        frame.promise().ownStop = std::move(token);
        return std::move(*this);
    }

    auto operator co_await() && noexcept { return Awaiter{frame}; }

private:
    friend promise_type;

    /// Passes on the context and the thread: the task starts inside the suspension of its awaiting task.
    struct Awaiter {
        std::coroutine_handle<promise_type> frame;

        bool await_ready() const noexcept { return false; }

        template <class Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> caller)
        {
            check(frame && !frame.promise().continuation, "a task is awaited once");
            frame.promise().inherit(caller.promise().context);
            frame.promise().continuation = caller;
            return frame;
        }

        T await_resume() { return frame.promise().take(); }
    };

    explicit Task(std::coroutine_handle<promise_type> handle) noexcept : frame(handle) {}

    std::coroutine_handle<promise_type> frame;
};

namespace detail {

template <class T>
Task<T> TaskPromise<T>::get_return_object() noexcept
{
    return Task<T>(std::coroutine_handle<TaskPromise>::from_promise(*this));
}

inline Task<void> TaskPromise<void>::get_return_object() noexcept
{
    return Task<void>(std::coroutine_handle<TaskPromise>::from_promise(*this));
}

/// Yields the context of the awaiting task, without suspending.
struct ContextAwaiter {
    TaskContext context;

    bool await_ready() const noexcept { return false; }

    template <class Promise>
    bool await_suspend(std::coroutine_handle<Promise> caller)
    {
        context = caller.promise().context;
        return false;
    }

    TaskContext await_resume() noexcept { return std::move(context); }
};

} // namespace detail

/// `co_await currentContext()` yields the executor and the stop token of the running task.
inline detail::ContextAwaiter currentContext()
{
    return {};
}

/// Starts a task that nobody awaits, on the executor and under the stop token of `context`.
///
/// The only way to start a task without awaiting it. `Cancelled` ends the task silently; any other exception is
/// reported on standard error. An executor that destroys the task before it ran frees its frame.
void spawn(TaskContext context, Task<void> task);

} // namespace tw
