#include "tests/hosts/ProxyConnection.h"

#include "tests/hosts/Loopback.h"

#include <algorithm>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <system_error>

#include <sys/socket.h>

namespace tw::test {

namespace {

/// Otherwise the system holds small pieces back until those before are acknowledged, which is a delay of its own.
void sendAtOnce(FileDescriptor const &socket)
{
    int const on = 1;
    ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

void closeWithReset(FileDescriptor const &socket)
{
    linger const noFarewell{.l_onoff = 1, .l_linger = 0};
    if (socket)
        ::setsockopt(socket.get(), SOL_SOCKET, SO_LINGER, &noFarewell, sizeof noFarewell);
}

/// Of a narrow line, what the receiver's system takes ahead of it is a queue that is not there.
void keepBufferSmall(FileDescriptor const &socket)
{
    int const bytes = 16 << 10;
    ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
}

/// What takes its turn on a narrow line at a time.
constexpr std::size_t packetBytes = 1448;

bool wouldBlock()
{
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}

pollfd interest(FileDescriptor const &socket, short events)
{
    // A socket that nothing is wanted of is left out: it would report that it was hung up again and again.
    return {.fd = events == 0 ? -1 : socket.get(), .events = events, .revents = 0};
}

} // namespace

ProxyConnection::ProxyConnection(FileDescriptor clientSocket, Time now, ProxyState const &state)
    : client(std::move(clientSocket)), hostDue(now + state.roundTrip * 3 / 2)
{
    sendAtOnce(client);
}

void ProxyConnection::addTo(std::vector<pollfd> &polls, Time now, ProxyState const &state) const
{
    auto clientEvents = 0;
    auto hostEvents = 0;
    if (towardsHost.receives())
        clientEvents |= POLLIN;
    if (towardsClient.sinkIsFull)
        clientEvents |= POLLOUT;
    if (stage == Stage::open && towardsClient.receives() && !state.isQueueFull(now))
        hostEvents |= POLLIN;
    if (stage == Stage::reachingHost || towardsHost.sinkIsFull)
        hostEvents |= POLLOUT;
    polls.push_back(interest(client, static_cast<short>(clientEvents)));
    polls.push_back(interest(host, static_cast<short>(hostEvents)));
}

std::optional<ProxyConnection::Time> ProxyConnection::due(ProxyState const &state) const
{
    std::optional<Time> first;
    auto const consider = [&first](std::optional<Time> time) {
        if (time && (!first || *time < *first))
            first = time;
    };
    if (stage == Stage::beforeHost && !state.stalledTowardsHost)
        consider(hostDue);
    if (stage == Stage::open && !state.stalledTowardsHost && towardsHost.delivers())
        consider(towardsHost.line.due());
    if (!state.stalledTowardsClient && towardsClient.delivers())
        consider(towardsClient.line.due());
    return first;
}

void ProxyConnection::advance(pollfd const *polled, Time now, ProxyState &state)
{
    auto const fromClient = polled[0].revents;
    auto const fromHost = polled[1].revents;
    if (stage == Stage::beforeHost && now >= hostDue && !state.stalledTowardsHost)
        reachHost(now, state);
    else if (stage == Stage::reachingHost && fromHost != 0)
        noteHostReached(now, state);
    if (fromClient != 0 && towardsHost.receives())
        receive(client, towardsHost, now, state);
    if (fromHost != 0 && stage == Stage::open && towardsClient.receives())
        receive(host, towardsClient, now, state);
    if (fromClient & ~POLLIN)
        towardsClient.sinkIsFull = false;
    if (fromHost & ~POLLIN)
        towardsHost.sinkIsFull = false;
    if (stage == Stage::open && !state.stalledTowardsHost)
        deliver(host, towardsHost, towardsClient, now, state);
    if (stage != Stage::over && !state.stalledTowardsClient)
        deliver(client, towardsClient, towardsHost, now, state);
    if (towardsHost.endIsDelivered && towardsClient.endIsDelivered)
        stage = Stage::over;
}

void ProxyConnection::end(Ending how)
{
    stage = Stage::over;
    if (how == Ending::reset) {
        closeWithReset(client);
        closeWithReset(host);
    }
}

void ProxyConnection::reachHost(Time now, ProxyState &state)
{
    stage = Stage::reachingHost;
    try {
        host = beginConnectingToLoopback(state.targetPort);
        sendAtOnce(host);
        if (state.bytesPerSecond > 0)
            keepBufferSmall(host);
    } catch (std::system_error const &) {
        giveUpHost(now, state);
    }
}

void ProxyConnection::giveUpHost(Time now, ProxyState &state)
{
    stage = Stage::withoutHost;
    host = FileDescriptor();
    towardsClient.line.end(Ending::reset, now + state.roundTrip / 2);
}

void ProxyConnection::noteHostReached(Time now, ProxyState &state)
{
    int failure = 0;
    socklen_t size = sizeof failure;
    ::getsockopt(host.get(), SOL_SOCKET, SO_ERROR, &failure, &size);
    if (failure == 0)
        stage = Stage::open;
    else
        giveUpHost(now, state);
}

void ProxyConnection::receive(FileDescriptor const &source, Way &way, Time now, ProxyState &state)
{
    auto const isNarrow = &way == &towardsClient && state.bytesPerSecond > 0;
    auto const arrival = now + state.roundTrip / 2;
    auto const got =
        ::recv(source.get(), state.buffer.data(), isNarrow ? packetBytes : state.buffer.size(), MSG_DONTWAIT);
    if (got > 0) {
        auto const bytes = static_cast<std::size_t>(got);
        way.line.put(std::string(state.buffer.data(), bytes), isNarrow ? timeOfArrival(bytes, now, state) : arrival);
        (state.traffic.*way.count).received += static_cast<std::uint64_t>(got);
    } else if (got == 0) {
        way.line.end(Ending::orderly, arrival);
    } else if (!wouldBlock()) {
        way.line.end(Ending::reset, arrival);
    }
}

/// Behind all that has been received before.
ProxyConnection::Time ProxyConnection::timeOfArrival(std::size_t bytes, Time now, ProxyState &state)
{
    std::chrono::duration<double> const time(static_cast<double>(bytes) / state.bytesPerSecond);
    state.lineFreeAt = std::max(now, state.lineFreeAt) + std::chrono::duration_cast<Time::duration>(time);
    return state.lineFreeAt + state.roundTrip / 2;
}

void ProxyConnection::deliver(FileDescriptor const &sink, Way &way, Way &back, Time now, ProxyState &state)
{
    while (way.delivers()) {
        auto const due = way.line.due();
        if (!due || *due > now)
            return;
        auto const bytes = way.line.front();
        if (bytes.empty()) {
            deliverEnd(sink, way);
            return;
        }
        auto const sent = ::send(sink.get(), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent > 0) {
            (state.traffic.*way.count).delivered += static_cast<std::uint64_t>(sent);
            way.line.drop(static_cast<std::size_t>(sent));
        } else if (wouldBlock()) {
            way.sinkIsFull = true;
        } else {
            // The receiver is gone, and the sender learns it as late as anything else from there.
            way.endIsDelivered = true;
            way.line.end(Ending::reset, now);
            back.line.end(Ending::reset, now + state.roundTrip / 2);
        }
    }
}

void ProxyConnection::deliverEnd(FileDescriptor const &sink, Way &way)
{
    way.endIsDelivered = true;
    if (way.line.ending() == Ending::reset)
        end(Ending::reset);
    else
        ::shutdown(sink.get(), SHUT_WR);
}

} // namespace tw::test
