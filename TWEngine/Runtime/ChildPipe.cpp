#include "TWEngine/Runtime/ChildPipe.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/OnExecutor.h"
#include "TWEngine/Runtime/Completion.h"
#include "TWEngine/Runtime/IoThread.h"
#include "TWEngine/Runtime/PipeError.h"
#include "TWEngine/Runtime/SpawnError.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>

#include <algorithm>
#include <cerrno>
#include <optional>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace tw {

namespace {

using Wait = Completion<Done>;
using WaitType = boost::asio::posix::stream_descriptor::wait_type;

/// What a read asks for if its buffer has no room to speak of: what a pipe holds unless it was told otherwise.
constexpr std::size_t usualRoom = std::size_t{64} * 1024;
constexpr std::size_t leastRoom = std::size_t{4} * 1024;

/// A pipe that is never empty would let its task keep its strand to itself. After so many bytes the task goes to the
/// end of its executor's queue; enough of them that the hop, some 10 µs, does not count.
constexpr std::size_t bytesATurn = std::size_t{8} * 1024 * 1024;

/// What takes everything. Opened once; a failure is tried again the next time.
int nowhere()
{
    static FileDescriptor const opened = [] {
        FileDescriptor null(::open("/dev/null", O_WRONLY | O_CLOEXEC));
        if (!null)
            throw PipeError(errno);
        return null;
    }();
    return opened.get();
}

} // namespace

struct ChildPipe::Stream {
    struct Waiting {
        std::shared_ptr<Stream> pipe;
        WaitType what;
    };

    enum class How { moved, copied };

    Stream(boost::asio::io_context &context, FileDescriptor opened) : end(std::move(opened)), watch(context) {}

    ~Stream() { endWatch(); }

    Stream(Stream const &) = delete;
    Stream &operator=(Stream const &) = delete;

    /// Fills `buffer`, with nothing at the end of the stream. False if the pipe is empty but not at its end.
    bool tryRead(std::string &buffer)
    {
        if (buffer.capacity() < leastRoom)
            buffer.reserve(usualRoom);
        std::lock_guard const lock(mutex);
        auto const number = openNumber();
        int error = 0;
        buffer.resize_and_overwrite(buffer.capacity(), [&](char *bytes, std::size_t room) {
            auto const count = ::read(number, bytes, room);
            error = count < 0 ? errno : 0;
            return static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        });
        return error == 0 ? served(buffer.size()) : mustWait(error);
    }

    /// Advances `written` by what went into the pipe; false if that was nothing because it is full.
    bool tryWrite(std::string const &bytes, std::size_t &written)
    {
        std::lock_guard const lock(mutex);
        auto const count = ::write(openNumber(), bytes.data() + written, bytes.size() - written);
        if (count < 0)
            return mustWait(errno);
        written += static_cast<std::size_t>(count);
        return served(static_cast<std::size_t>(count));
    }

    /// Sets `passed` to what went from one pipe into the other. Otherwise returns the end to be waited for: at the end
    /// of `from` nothing passes, and nobody is waited for.
    static std::optional<Waiting> tryPass(std::shared_ptr<Stream> const &from, std::shared_ptr<Stream> const &to,
                                          How how, std::size_t most, std::size_t &passed)
    {
        std::scoped_lock const lock(from->mutex, to->mutex);
        auto const source = from->openNumber();
        auto const target = to->openNumber();
        auto const count = how == How::moved ? ::splice(source, nullptr, target, nullptr, most, SPLICE_F_NONBLOCK)
                                             : ::tee(source, target, most, SPLICE_F_NONBLOCK);
        if (count >= 0) {
            passed = static_cast<std::size_t>(count);
            from->served(passed);
            return std::nullopt;
        }
        mustWait(errno);
        // It does not say which of the two is not ready.
        pollfd state{.fd = source, .events = POLLIN, .revents = 0};
        if (::poll(&state, 1, 0) == 0)
            return Waiting{from, WaitType::wait_read};
        return Waiting{to, WaitType::wait_write};
    }

    /// Calls `take` with the open end and with how much is still to be taken, until that is all.
    template <class Take>
    void takeAll(std::size_t count, Take const &take)
    {
        std::lock_guard const lock(mutex);
        for (auto left = count; left > 0;) {
            auto const taken = take(openNumber(), left);
            if (taken == 0 || (taken < 0 && errno != EINTR))
                throw PipeError(taken < 0 ? errno : EPIPE);
            left -= static_cast<std::size_t>(std::max<ssize_t>(taken, 0));
        }
    }

    bool takeTurnIsOver()
    {
        std::lock_guard const lock(mutex);
        if (servedThisTurn < bytesATurn)
            return false;
        servedThisTurn = 0;
        return true;
    }

    void notifyWhenReady(std::shared_ptr<Stream> const &self, WaitType what, std::shared_ptr<Wait> const &ready)
    {
        std::lock_guard const lock(mutex);
        servedThisTurn = 0;
        boost::system::error_code error;
        if (!watch.is_open())
            watch.assign(openNumber(), error);
        if (error)
            throw PipeError(error.value());
        // Whatever it says, a closed or a broken pipe included, the next attempt says it better.
        watch.async_wait(what, [self, ready](boost::system::error_code) {
            self->cancelWait();
            ready->succeed({});
        });
    }

    void cancelWait()
    {
        std::lock_guard const lock(mutex);
        endWatch();
    }

    void close()
    {
        std::lock_guard const lock(mutex);
        endWatch();
        end = FileDescriptor();
    }

    static Task<void> untilReady(std::shared_ptr<Stream> self, WaitType what)
    {
        auto const ready = std::make_shared<Wait>();
        self->notifyWhenReady(self, what, ready);
        try {
            co_await Wait::wait(ready);
        } catch (Cancelled const &) {
            self->cancelWait();
            throw;
        }
    }

    /// Throws if the task was stopped, also when the pipe never makes it wait; gives way when its turn is over.
    static Task<void> keepInTurn(std::shared_ptr<Stream> self)
    {
        auto const context = co_await currentContext();
        if (context.stop.stop_requested())
            throw Cancelled();
        if (self->takeTurnIsOver())
            co_await detail::HopAwaiter{context.executor};
    }

    static Task<std::string> read(std::shared_ptr<Stream> self, std::string buffer)
    {
        for (;;) {
            co_await keepInTurn(self);
            if (self->tryRead(buffer))
                co_return buffer;
            co_await untilReady(self, WaitType::wait_read);
        }
    }

    static Task<std::string> write(std::shared_ptr<Stream> self, std::string bytes)
    {
        std::size_t written = 0;
        while (written < bytes.size()) {
            co_await keepInTurn(self);
            if (!self->tryWrite(bytes, written))
                co_await untilReady(self, WaitType::wait_write);
        }
        co_return bytes;
    }

    static Task<std::size_t> pass(std::shared_ptr<Stream> from, std::shared_ptr<Stream> to, How how, std::size_t most)
    {
        std::size_t passed = 0;
        for (;;) {
            co_await keepInTurn(from);
            auto const waiting = tryPass(from, to, how, most, passed);
            if (!waiting)
                co_return passed;
            co_await untilReady(waiting->pipe, waiting->what);
        }
    }

private:
    int openNumber() const
    {
        if (!end)
            throw PipeError(EBADF);
        return end.get();
    }

    void endWatch()
    {
        if (watch.is_open())
            watch.release();
    }

    bool served(std::size_t count)
    {
        servedThisTurn += count;
        return true;
    }

    /// False for what passes, an exception for what stays.
    static bool mustWait(int error)
    {
        if (error != EAGAIN && error != EINTR)
            throw PipeError(error);
        return false;
    }

    std::mutex mutex;
    // Under the mutex.
    FileDescriptor end;
    /// Open only while a task waits: otherwise the I/O thread would be woken by each write of the other side.
    boost::asio::posix::stream_descriptor watch;
    std::size_t servedThisTurn = 0;
};

ChildPipe::ChildPipe(IoThread &io, FileDescriptor end)
{
    // Only our end: the flag belongs to it, and the child expects a pipe that blocks.
    if (fcntl(end.get(), F_SETFL, O_NONBLOCK) != 0)
        throw SpawnError(errno, "pipe");
    stream = std::make_shared<Stream>(io.context(), std::move(end));
}

ChildPipe::~ChildPipe()
{
    stream->close();
}

Task<std::string> ChildPipe::read(std::string buffer) const
{
    return Stream::read(stream, std::move(buffer));
}

Task<std::string> ChildPipe::write(std::string bytes) const
{
    return Stream::write(stream, std::move(bytes));
}

Task<std::size_t> ChildPipe::moveTo(ChildPipe const &target, std::size_t most) const
{
    return Stream::pass(stream, target.stream, Stream::How::moved, most);
}

Task<std::size_t> ChildPipe::copyTo(ChildPipe const &target, std::size_t most) const
{
    return Stream::pass(stream, target.stream, Stream::How::copied, most);
}

void ChildPipe::take(std::span<char> bytes) const
{
    stream->takeAll(bytes.size(),
                    [&](int end, std::size_t left) { return ::read(end, bytes.last(left).data(), left); });
}

void ChildPipe::drop(std::size_t count) const
{
    stream->takeAll(count, [](int end, std::size_t left) {
        return ::splice(end, nullptr, nowhere(), nullptr, left, SPLICE_F_NONBLOCK);
    });
}

void ChildPipe::close() const noexcept
{
    stream->close();
}

} // namespace tw
