#pragma once

#include "TWEngine/Runtime/ChildSessions.h"

#include <memory>

namespace boost::asio {
class io_context;
} // namespace boost::asio

namespace tw {

/// The thread that waits for pipes, timers and the ends of child processes.
///
/// It runs only the completion handlers of the runtime, which post to another executor and return.
///
/// Threads: `context` may be posted to from anywhere.
/// Lifetime: the destructor stops the loop and joins. Operations in flight are dropped without a result, so their
/// owners are shut down before. Dropped children that still run are killed and collected.
class IoThread {
public:
    /// Also sets two signals for the whole process: SIGPIPE, so that a write into a pipe without a reader is an error
    /// and does not end the process, and SIGCHLD, so that the exit status of a child is kept until it is collected.
    IoThread();
    ~IoThread();

    IoThread(IoThread const &) = delete;
    IoThread &operator=(IoThread const &) = delete;

    boost::asio::io_context &context() const noexcept;

    /// Those of the children that are not collected.
    ChildSessions &childSessions() noexcept { return sessions; }

private:
    struct Loop;

    ChildSessions sessions; ///< before the loop, whose handlers use it until they are gone
    std::unique_ptr<Loop> loop;
};

} // namespace tw
