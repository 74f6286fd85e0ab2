#include "tests/hosts/Loopback.h"

#include <cerrno>
#include <netinet/in.h>
#include <system_error>

#include <sys/socket.h>

namespace tw::test {

namespace {

[[noreturn]] void fail(char const *what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

sockaddr_in address(std::uint16_t port)
{
    sockaddr_in loopback{};
    loopback.sin_family = AF_INET;
    loopback.sin_port = htons(port);
    loopback.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return loopback;
}

FileDescriptor makeSocket(int flags)
{
    FileDescriptor made(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
    if (!made)
        fail("socket");
    return made;
}

FileDescriptor bindToFreePort(int flags)
{
    auto bound = makeSocket(flags);
    int const reuse = 1;
    if (::setsockopt(bound.get(), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse) != 0)
        fail("SO_REUSEADDR");
    auto const any = address(0);
    if (::bind(bound.get(), reinterpret_cast<sockaddr const *>(&any), sizeof any) != 0)
        fail("bind");
    return bound;
}

} // namespace

FileDescriptor listenOnLoopback()
{
    auto listener = bindToFreePort(SOCK_NONBLOCK);
    if (::listen(listener.get(), SOMAXCONN) != 0)
        fail("listen");
    return listener;
}

FileDescriptor reserveLoopbackPort()
{
    return bindToFreePort(0);
}

std::uint16_t portOf(FileDescriptor const &socket)
{
    sockaddr_in own{};
    socklen_t size = sizeof own;
    if (::getsockname(socket.get(), reinterpret_cast<sockaddr *>(&own), &size) != 0)
        fail("getsockname");
    return ntohs(own.sin_port);
}

FileDescriptor connectToLoopback(std::uint16_t port)
{
    auto connected = makeSocket(0);
    auto const target = address(port);
    if (::connect(connected.get(), reinterpret_cast<sockaddr const *>(&target), sizeof target) != 0)
        fail("connect");
    return connected;
}

FileDescriptor beginConnectingToLoopback(std::uint16_t port)
{
    auto connecting = makeSocket(SOCK_NONBLOCK);
    auto const target = address(port);
    if (::connect(connecting.get(), reinterpret_cast<sockaddr const *>(&target), sizeof target) != 0 &&
        errno != EINPROGRESS)
        fail("connect");
    return connecting;
}

} // namespace tw::test
