#pragma once

#include "tests/hosts/DelayLine.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace tw::test {

/// What of a connection an operation is about.
enum class Ways { towardsHost, towardsClient, both };

/// What has gone through a proxy so far.
struct Traffic {
    struct Way {
        std::uint64_t received = 0;  ///< bytes taken from the sender
        std::uint64_t delivered = 0; ///< bytes handed to the receiver
    };

    std::uint64_t connections = 0; ///< ever made by clients
    std::uint64_t open = 0;        ///< of them, those that are not over
    Way towardsHost;
    Way towardsClient;
};

/// A port of 127.0.0.1 behind which a server of this machine is as far away as one wishes.
///
/// It delays and does not limit: bytes come out in the order and at the rate in which they went in, half a round trip
/// later. A new connection reaches the server after one and a half round trips, the time that the handshake of a
/// connection takes before the server knows of it.
///
/// Threads: all operations may be called from any thread. Each takes effect before it returns.
/// Lifetime: the destructor cuts all connections. The server may come and go; a client that comes meanwhile is reset.
class DelayProxy {
public:
    DelayProxy(std::uint16_t targetPort, std::chrono::nanoseconds roundTrip);
    ~DelayProxy();

    DelayProxy(DelayProxy const &) = delete;
    DelayProxy &operator=(DelayProxy const &) = delete;

    std::uint16_t port() const noexcept;

    /// For what is sent from now on. Nothing overtakes what is on its way already.
    void setRoundTrip(std::chrono::nanoseconds roundTrip);

    /// Delivers nothing any more, neither bytes nor ends nor new connections. Senders are slowed down only when the
    /// line is full.
    void stall(Ways ways = Ways::both);

    /// Delivers again, at once what was due meanwhile.
    void resume();

    /// Ends all connections, those that are being made included; what was on its way is lost.
    void cut(Ending how = Ending::orderly);

    Traffic traffic() const;

    /// Blocks until the traffic is as wished. Throws std::runtime_error within a limit that only a hang reaches.
    Traffic waitUntil(std::function<bool(Traffic const &)> condition) const;

private:
    class Loop;

    std::unique_ptr<Loop> const loop;
};

} // namespace tw::test
