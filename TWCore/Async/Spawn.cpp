#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Task.h"

#include <cstdio>

namespace tw {

namespace {

/// The coroutine around a spawned task: owns itself once it runs, and frees itself at its end.
struct Root {
    struct promise_type {
        TaskContext context;

        Root get_return_object() noexcept { return {std::coroutine_handle<promise_type>::from_promise(*this)}; }

        std::suspend_always initial_suspend() const noexcept { return {}; }

        std::suspend_never final_suspend() const noexcept { return {}; }

        void return_void() const noexcept {}

        // Unreachable: the body catches everything.
        void unhandled_exception() const noexcept { std::terminate(); }
    };

    std::coroutine_handle<promise_type> frame;
};

void reportLoose(char const *what)
{
    std::fprintf(stderr, "tarnwick: a background task failed: %s\n", what);
}

Root rootOf(Task<void> task)
{
    try {
        co_await std::move(task);
    } catch (Cancelled const &) {
        // The way for a task to end that was told to.
    } catch (std::exception const &failure) {
        reportLoose(failure.what());
    } catch (...) {
        reportLoose("an exception of unknown type");
    }
}

/// Frees the frame if the executor lets go of the work without having run it.
struct FrameOwner {
    std::coroutine_handle<Root::promise_type> frame;

    explicit FrameOwner(std::coroutine_handle<Root::promise_type> handle) noexcept : frame(handle) {}

    FrameOwner(FrameOwner &&other) noexcept : frame(std::exchange(other.frame, {})) {}

    FrameOwner &operator=(FrameOwner &&) = delete;

    ~FrameOwner()
    {
        if (frame)
            frame.destroy();
    }

    void operator()() { std::exchange(frame, {}).resume(); }
};

} // namespace

void spawn(TaskContext context, Task<void> task)
{
    auto const root = rootOf(std::move(task));
    auto const executor = context.executor;
    root.frame.promise().context = std::move(context);
    executor->post(FrameOwner(root.frame));
}

} // namespace tw
