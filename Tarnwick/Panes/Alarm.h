#pragma once

#include "TWCore/Async/Clock.h"

#include <functional>
#include <memory>

namespace tw {

/// Something that is done once, after a while, unless it is called off before.
///
/// Threads: main context only.
/// Lifetime: calls its action off when it goes.
class Alarm {
public:
    Alarm(std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock, std::function<void()> action);

    ~Alarm() { cancel(); }

    Alarm(Alarm const &) = delete;
    Alarm &operator=(Alarm const &) = delete;

    /// Replaces an earlier time.
    void set(std::chrono::nanoseconds delay);
    void cancel();

private:
    static Task<void> ring(std::weak_ptr<std::function<void()>> weak, std::shared_ptr<Clock> clock,
                           std::chrono::nanoseconds delay);

    std::shared_ptr<Executor> const executor;
    std::shared_ptr<Clock> const time;
    std::shared_ptr<std::function<void()>> const action;
    std::stop_source waiting;
};

} // namespace tw
