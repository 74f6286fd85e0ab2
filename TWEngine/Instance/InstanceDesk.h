#pragma once

#include "TWCore/Async/Clock.h"
#include "TWEngine/Runtime/LocalListener.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace tw {

/// Where the running program takes the calls of those that are started beside it.
///
/// Only this user's processes are heard. A caller that has gone before the agreement reached it does the work itself,
/// so nothing is done for it.
///
/// Threads: everything on the executor.
/// Lifetime: the I/O thread outlives it. The destructor closes; calls in flight end.
class InstanceDesk {
public:
    /// Of a message. A command line is shorter, and no other is made of more.
    static constexpr std::size_t longestMessage = 64UL * 1024;

    /// At a time.
    static constexpr int mostCallers = 4;

    /// A caller sends at once.
    static constexpr std::chrono::seconds messageLimit{2};

    struct Collaborators {
        IoThread &io;
        std::shared_ptr<Executor> executor;
        std::shared_ptr<Clock> clock;
        std::unique_ptr<LocalListener> listener;
        /// What a message asks for, once the caller has heard that it is done; null for one that makes no sense.
        std::function<std::function<void()>(std::string_view message)> understand;
    };

    explicit InstanceDesk(Collaborators collaborators);
    ~InstanceDesk();

    InstanceDesk(InstanceDesk const &) = delete;
    InstanceDesk &operator=(InstanceDesk const &) = delete;

    /// Where a message ends: behind an empty part. Parts end with a zero byte each.
    static bool isWhole(std::string_view received);

private:
    struct State;

    static Task<void> listen(std::shared_ptr<State> state);
    static Task<void> serve(std::shared_ptr<State> state, std::shared_ptr<class ChildPipe> line);

    std::shared_ptr<State> const state;
};

} // namespace tw
