#pragma once

#include <memory>

namespace boost::asio {
class io_context;
} // namespace boost::asio

namespace tw {

/// The one thread that waits for pipes, timers and the ends of child processes.
///
/// Nothing runs on it but the completion handlers of the runtime, which hand over and return.
///
/// Threads: `context` may be posted to from anywhere.
/// Lifetime: the destructor stops the loop and joins; outstanding operations are dropped without being completed, so
/// their owners have to be shut down before. Children that were dropped and still run are killed and collected.
class IoThread {
public:
    /// Also sets two signals for the whole process, as pipes and children need them: a write into a pipe without a
    /// reader is an error instead of the end, and the ends of children are kept until they are asked for.
    IoThread();
    ~IoThread();

    IoThread(IoThread const &) = delete;
    IoThread &operator=(IoThread const &) = delete;

    boost::asio::io_context &context() const noexcept;

private:
    struct Loop;

    std::unique_ptr<Loop> loop;
};

} // namespace tw
