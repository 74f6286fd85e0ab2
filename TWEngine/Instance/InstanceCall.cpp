#include "TWEngine/Instance/InstanceCall.h"

#include "TWEngine/Runtime/FileDescriptor.h"
#include "TWEngine/Runtime/Uninterrupted.h"

#include <array>
#include <cerrno>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tw::InstanceCall {

namespace {

using Deadline = std::chrono::steady_clock::time_point;

/// False at the deadline.
bool waitFor(int socket, short events, Deadline deadline)
{
    for (;;) {
        auto const left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
        if (left <= 0)
            return false;
        pollfd waiting{.fd = socket, .events = events, .revents = 0};
        auto const ready = ::poll(&waiting, 1, static_cast<int>(left));
        if (ready > 0)
            return true;
        if (ready < 0 && errno != EINTR)
            return false;
    }
}

bool sendAll(int socket, std::string_view bytes, Deadline deadline)
{
    while (!bytes.empty()) {
        auto const sent =
            uninterrupted([&] { return ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT); });
        if (sent > 0)
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        else if (errno != EAGAIN || !waitFor(socket, POLLOUT, deadline))
            return false;
    }
    return true;
}

bool hearAgreement(int socket, Deadline deadline)
{
    std::string heard;
    while (heard.size() < agreement.size()) {
        if (!waitFor(socket, POLLIN, deadline))
            return false;
        std::array<char, agreement.size()> piece{};
        auto const count =
            uninterrupted([&] { return ::recv(socket, piece.data(), agreement.size() - heard.size(), MSG_DONTWAIT); });
        if (count <= 0)
            return false;
        heard.append(piece.data(), static_cast<std::size_t>(count));
    }
    return heard == agreement;
}

bool isOurUsers(int socket)
{
    ucred peer{};
    socklen_t length = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 && peer.uid == ::getuid();
}

} // namespace

Outcome make(std::string const &path, std::string_view message, std::chrono::milliseconds limit)
{
    auto const deadline = std::chrono::steady_clock::now() + limit;
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    if (path.size() >= sizeof address.sun_path)
        return Outcome::nobody;
    path.copy(static_cast<char *>(address.sun_path), path.size());
    // Not blocking: one that is called by many at a time and takes no call would hold this process for good.
    FileDescriptor const socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket || ::connect(socket.get(), reinterpret_cast<sockaddr const *>(&address), sizeof address) != 0)
        return errno == EAGAIN ? Outcome::silent : Outcome::nobody;
    auto const agrees =
        isOurUsers(socket.get()) && sendAll(socket.get(), message, deadline) && hearAgreement(socket.get(), deadline);
    return agrees ? Outcome::agreed : Outcome::silent;
}

} // namespace tw::InstanceCall
