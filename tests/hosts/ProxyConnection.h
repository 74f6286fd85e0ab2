#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"
#include "tests/hosts/DelayLine.h"
#include "tests/hosts/DelayProxy.h"

#include <vector>

#include <poll.h>

namespace tw::test {

/// Shared by all connections of a proxy.
struct ProxyState {
    std::uint16_t targetPort;
    std::chrono::nanoseconds roundTrip;
    bool stalledTowardsHost = false;
    bool stalledTowardsClient = false;
    /// Towards the client, for all connections together; 0: as fast as the machine.
    double bytesPerSecond = 0;
    DelayLine::Time lineFreeAt = {}; ///< when what has been received has left the narrow place
    Traffic traffic = {};
    std::vector<char> buffer = {}; ///< for receiving

    /// The queue before a narrow line is full: its sender waits.
    bool isQueueFull(DelayLine::Time now) const { return bytesPerSecond > 0 && lineFreeAt > now + queue; }

    /// As much as a router at home holds.
    static constexpr std::chrono::milliseconds queue{100};
};

/// One connection through a DelayProxy: two sockets and the bytes in flight between them.
///
/// Threads: the thread of the proxy only.
class ProxyConnection {
public:
    using Time = DelayLine::Time;

    ProxyConnection(FileDescriptor client, Time now, ProxyState const &state);

    ProxyConnection(ProxyConnection &&) noexcept = default;
    ProxyConnection &operator=(ProxyConnection &&) noexcept = default;

    /// The number of entries that `addTo` adds.
    static constexpr std::size_t pollCount = 2;

    void addTo(std::vector<pollfd> &polls, Time now, ProxyState const &state) const;

    /// When there is work that no socket announces; nothing if there is none.
    std::optional<Time> due(ProxyState const &state) const;

    /// Does everything that is possible now. `polled` are the entries that `addTo` added.
    void advance(pollfd const *polled, Time now, ProxyState &state);

    bool isOver() const noexcept { return stage == Stage::over; }

    /// The destructor closes the sockets; after a reset the peers see a reset.
    void end(Ending how);

private:
    enum class Stage { beforeHost, reachingHost, open, withoutHost, over };

    struct Way {
        Traffic::Way Traffic::*count;
        DelayLine line = {};
        bool sinkIsFull = false;
        bool endIsDelivered = false;

        bool receives() const { return !line.ending() && !line.isFull(); }

        bool delivers() const { return !sinkIsFull && !endIsDelivered; }
    };

    void reachHost(Time now, ProxyState &state);
    void giveUpHost(Time now, ProxyState &state);
    void noteHostReached(Time now, ProxyState &state);
    void receive(FileDescriptor const &source, Way &way, Time now, ProxyState &state);
    static Time timeOfArrival(std::size_t bytes, Time now, ProxyState &state);
    void deliver(FileDescriptor const &sink, Way &way, Way &back, Time now, ProxyState &state);
    void deliverEnd(FileDescriptor const &sink, Way &way);

    FileDescriptor client;
    FileDescriptor host;
    Time hostDue;
    Stage stage = Stage::beforeHost;
    Way towardsHost{&Traffic::towardsHost};
    Way towardsClient{&Traffic::towardsClient};
};

} // namespace tw::test
