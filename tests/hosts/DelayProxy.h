#pragma once

#include "tests/hosts/DelayLine.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace tw::test {

/// The directions that an operation applies to.
enum class Ways { towardsHost, towardsClient, both };

/// The traffic of a proxy so far.
struct Traffic {
    struct Way {
        std::uint64_t received = 0;  ///< bytes taken from the sender
        std::uint64_t delivered = 0; ///< bytes handed to the receiver
    };

    std::uint64_t connections = 0; ///< all that clients have made
    std::uint64_t open = 0;        ///< those that have not ended
    Way towardsHost;
    Way towardsClient;
};

/// A port of 127.0.0.1 that puts a round trip of any length between a client and a server on this machine.
///
/// It delays, and does not limit unless a speed is set: bytes come out in the order and at the rate in which they came
/// in, half a round trip later. A new connection reaches the server after one and a half round trips, as long as a TCP
/// handshake takes.
///
/// Threads: all operations may be called from any thread. Each takes effect before it returns.
/// Lifetime: the destructor cuts all connections. The server may stop and start; meanwhile new clients are reset.
class DelayProxy {
public:
    DelayProxy(std::uint16_t targetPort, std::chrono::nanoseconds roundTrip);
    ~DelayProxy();

    DelayProxy(DelayProxy const &) = delete;
    DelayProxy &operator=(DelayProxy const &) = delete;

    std::uint16_t port() const noexcept;

    /// Applies to later bytes. Bytes in flight still arrive first.
    void setRoundTrip(std::chrono::nanoseconds roundTrip);

    /// Lets that many bytes a second through towards the client, on all connections together, behind a queue as short
    /// as that of a router. 0: as many as there are. Set before the connections are made.
    void setSpeed(double bytesPerSecond);

    /// Stops delivering bytes, ends and new connections. Senders can go on until the line is full.
    void stall(Ways ways = Ways::both);

    /// Delivers again, overdue bytes at once.
    void resume();

    /// Ends all connections, also those that are being made. Bytes in flight are lost.
    void cut(Ending how = Ending::orderly);

    Traffic traffic() const;

    /// Blocks until the condition holds. Throws std::runtime_error after a limit that only a hang reaches.
    Traffic waitUntil(std::function<bool(Traffic const &)> condition) const;

private:
    class Loop;

    std::unique_ptr<Loop> const loop;
};

} // namespace tw::test
