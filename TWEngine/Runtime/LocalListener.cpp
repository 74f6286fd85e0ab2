#include "TWEngine/Runtime/LocalListener.h"

#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Runtime/Completion.h"
#include "TWEngine/Runtime/IoThread.h"
#include "TWEngine/Runtime/PipeError.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>

#include <cerrno>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace tw {

namespace {

using Wait = Completion<Done>;
using boost::asio::posix::stream_descriptor;

/// Callers that have not been accepted yet. Nobody calls in numbers.
constexpr int backlog = 16;

} // namespace

struct LocalListener::Socket {
    Socket(boost::asio::io_context &context, std::string file) : path(std::move(file)), descriptor(context) {}

    /// Nothing if nobody is waiting.
    std::optional<Caller> tryAccept()
    {
        std::lock_guard const lock(mutex);
        if (!descriptor.is_open())
            throw PipeError(EBADF);
        Caller caller{.connection =
                          FileDescriptor(::accept4(descriptor.native_handle(), nullptr, nullptr, SOCK_CLOEXEC))};
        if (!caller.connection) {
            if (errno == EAGAIN || errno == EINTR || errno == ECONNABORTED)
                return std::nullopt;
            throw PipeError(errno);
        }
        ucred peer{};
        socklen_t length = sizeof peer;
        if (::getsockopt(caller.connection.get(), SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0)
            throw PipeError(errno);
        caller.process = peer.pid;
        caller.user = peer.uid;
        return caller;
    }

    void notifyWhenReady(std::shared_ptr<Socket> const &self, std::shared_ptr<Wait> const &ready)
    {
        std::lock_guard const lock(mutex);
        if (descriptor.is_open())
            descriptor.async_wait(stream_descriptor::wait_read,
                                  [self, ready](boost::system::error_code) { ready->succeed({}); });
        else
            ready->succeed({});
    }

    void cancelWait()
    {
        std::lock_guard const lock(mutex);
        boost::system::error_code ignored;
        descriptor.cancel(ignored);
    }

    void close()
    {
        std::lock_guard const lock(mutex);
        if (!descriptor.is_open())
            return;
        ::unlink(path.c_str());
        boost::system::error_code ignored;
        descriptor.close(ignored);
    }

    static Task<Caller> accept(std::shared_ptr<Socket> self)
    {
        for (;;) {
            if (auto caller = self->tryAccept())
                co_return std::move(*caller);
            auto const ready = std::make_shared<Wait>();
            self->notifyWhenReady(self, ready);
            try {
                co_await Wait::wait(ready);
            } catch (Cancelled const &) {
                self->cancelWait();
                throw;
            }
        }
    }

    std::string const path;

    std::mutex mutex;
    // Under the mutex.
    stream_descriptor descriptor;
};

std::unique_ptr<LocalListener> LocalListener::create(IoThread &io, std::string const &path)
{
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    if (path.empty() || path.size() >= sizeof address.sun_path)
        return nullptr;
    path.copy(static_cast<char *>(address.sun_path), path.size());
    FileDescriptor opened(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!opened || ::bind(opened.get(), reinterpret_cast<sockaddr const *>(&address), sizeof address) != 0)
        return nullptr;
    auto socket = std::make_shared<Socket>(io.context(), path);
    boost::system::error_code error;
    // The rights come before the first caller can: until `listen`, everybody is refused.
    auto const isOpen = ::chmod(path.c_str(), S_IRUSR | S_IWUSR) == 0 && ::listen(opened.get(), backlog) == 0;
    if (isOpen)
        socket->descriptor.assign(opened.get(), error);
    if (!isOpen || error) {
        ::unlink(path.c_str());
        return nullptr;
    }
    opened.release();
    return std::unique_ptr<LocalListener>(new LocalListener(std::move(socket)));
}

LocalListener::~LocalListener()
{
    socket->close();
}

Task<LocalListener::Caller> LocalListener::accept() const
{
    return Socket::accept(socket);
}

void LocalListener::close() const noexcept
{
    socket->close();
}

} // namespace tw
