#include "tests/hosts/DelayProxy.h"

#include "tests/hosts/Loopback.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <system_error>
#include <thread>

#include <poll.h>
#include <sys/socket.h>

namespace tw::test {

using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

/// A server whose every word the test says itself.
class DelayProxyTest : public testing::Test {
protected:
    FileDescriptor server = listenOnLoopback();

    FileDescriptor accept()
    {
        pollfd waiting{.fd = server.get(), .events = POLLIN, .revents = 0};
        EXPECT_EQ(::poll(&waiting, 1, -1), 1);
        return FileDescriptor(::accept4(server.get(), nullptr, nullptr, SOCK_CLOEXEC));
    }

    std::unique_ptr<DelayProxy> proxyWith(std::chrono::nanoseconds roundTrip) const
    {
        return std::make_unique<DelayProxy>(portOf(server), roundTrip);
    }
};

void say(FileDescriptor const &socket, std::string_view text)
{
    while (!text.empty()) {
        auto const sent = ::send(socket.get(), text.data(), text.size(), MSG_NOSIGNAL);
        ASSERT_GT(sent, 0);
        text.remove_prefix(static_cast<std::size_t>(sent));
    }
}

/// The next `size` bytes, or fewer if the other side ends before.
std::string hear(FileDescriptor const &socket, std::size_t size)
{
    std::string text(size, '\0');
    std::size_t length = 0;
    while (length < size) {
        auto const got = ::recv(socket.get(), text.data() + length, size - length, 0);
        if (got <= 0)
            break;
        length += static_cast<std::size_t>(got);
    }
    text.resize(length);
    return text;
}

/// What a read says without waiting: EAGAIN while there is nothing, 0 at the end.
int errorOfRead(FileDescriptor const &socket, int flags = 0)
{
    char byte = 0;
    return ::recv(socket.get(), &byte, 1, flags) < 0 ? errno : 0;
}

void resetWhenClosed(FileDescriptor const &socket)
{
    linger const noFarewell{.l_onoff = 1, .l_linger = 0};
    ASSERT_EQ(::setsockopt(socket.get(), SOL_SOCKET, SO_LINGER, &noFarewell, sizeof noFarewell), 0);
}

TEST_F(DelayProxyTest, bytesPassInBothWays)
{
    auto const proxy = proxyWith(0ms);
    auto const client = connectToLoopback(proxy->port());
    auto const host = accept();

    say(client, "question");
    EXPECT_EQ(hear(host, 8), "question");
    say(host, "answer");
    EXPECT_EQ(hear(client, 6), "answer");
}

TEST_F(DelayProxyTest, anAnswerIsNeverEarlierThanTheRoundTrip)
{
    auto const proxy = proxyWith(0ms);
    auto const client = connectToLoopback(proxy->port());
    auto const host = accept();
    proxy->setRoundTrip(40ms);

    auto const start = Clock::now();
    say(client, "?");
    hear(host, 1);
    EXPECT_GE(Clock::now() - start, 20ms);
    say(host, "!");
    hear(client, 1);
    EXPECT_GE(Clock::now() - start, 40ms);
}

TEST_F(DelayProxyTest, aConnectionReachesTheServerAfterItsHandshake)
{
    auto const proxy = proxyWith(20ms);

    auto const start = Clock::now();
    auto const client = connectToLoopback(proxy->port());
    auto const host = accept();
    EXPECT_GE(Clock::now() - start, 30ms);
    say(host, "hello");
    EXPECT_EQ(hear(client, 5), "hello");
    EXPECT_GE(Clock::now() - start, 40ms);
}

TEST_F(DelayProxyTest, nothingOvertakesWhenTheRoundTripShrinks)
{
    auto const proxy = proxyWith(0ms);
    auto const client = connectToLoopback(proxy->port());
    auto const host = accept();

    proxy->setRoundTrip(100ms);
    say(client, "slow ");
    proxy->waitUntil([](Traffic const &traffic) { return traffic.towardsHost.received == 5; });
    proxy->setRoundTrip(0ms);
    say(client, "fast");

    EXPECT_EQ(hear(host, 9), "slow fast");
}

TEST_F(DelayProxyTest, aStallHoldsWhatIsSentUntilItIsResumed)
{
    auto const proxy = proxyWith(0ms);
    auto const client = connectToLoopback(proxy->port());
    auto const host = accept();

    proxy->stall();
    say(client, "question");
    say(host, "answer");
    auto const traffic = proxy->waitUntil(
        [](Traffic const &now) { return now.towardsHost.received == 8 && now.towardsClient.received == 6; });
    EXPECT_EQ(traffic.towardsHost.delivered, 0U);
    EXPECT_EQ(traffic.towardsClient.delivered, 0U);
    EXPECT_EQ(errorOfRead(host, MSG_DONTWAIT), EAGAIN);
    EXPECT_EQ(errorOfRead(client, MSG_DONTWAIT), EAGAIN);

    proxy->resume();
    EXPECT_EQ(hear(host, 8), "question");
    EXPECT_EQ(hear(client, 6), "answer");
}

TEST_F(DelayProxyTest, aStallOfOneWayLeavesTheOtherAlone)
{
    auto const proxy = proxyWith(0ms);
    auto const client = connectToLoopback(proxy->port());
    auto const host = accept();

    proxy->stall(Ways::towardsClient);
    say(client, "question");
    EXPECT_EQ(hear(host, 8), "question");
    say(host, "answer");
    proxy->waitUntil([](Traffic const &traffic) { return traffic.towardsClient.received == 6; });
    EXPECT_EQ(errorOfRead(client, MSG_DONTWAIT), EAGAIN);

    proxy->resume();
    EXPECT_EQ(hear(client, 6), "answer");
}

TEST_F(DelayProxyTest, aStallHoldsNewConnectionsAndEndsToo)
{
    auto const proxy = proxyWith(0ms);
    auto const first = connectToLoopback(proxy->port());
    auto host = accept();

    proxy->stall();
    auto const second = connectToLoopback(proxy->port());
    host = FileDescriptor();
    say(second, "?");
    proxy->waitUntil([](Traffic const &traffic) { return traffic.towardsHost.received == 1; });
    EXPECT_EQ(::accept4(server.get(), nullptr, nullptr, SOCK_CLOEXEC), -1);
    EXPECT_EQ(errorOfRead(first, MSG_DONTWAIT), EAGAIN);

    proxy->resume();
    EXPECT_EQ(hear(accept(), 1), "?");
    EXPECT_EQ(errorOfRead(first), 0);
}

TEST_F(DelayProxyTest, aLongLineTakesFarMoreThanSocketsDo)
{
    constexpr std::size_t size = std::size_t{32} << 20;
    auto const proxy = proxyWith(0ms);
    auto const client = connectToLoopback(proxy->port());
    auto const host = accept();
    auto const bytes = std::string(size - 1, 'x') + '!';

    proxy->stall();
    say(client, bytes);
    auto const traffic = proxy->waitUntil([](Traffic const &now) { return now.towardsHost.received == size; });
    EXPECT_EQ(traffic.towardsHost.delivered, 0U);

    proxy->resume();
    EXPECT_TRUE(hear(host, size) == bytes);
}

TEST_F(DelayProxyTest, aFullLineMakesTheSenderWaitAndLosesNothing)
{
    constexpr std::size_t size = DelayLine::capacity + (std::size_t{32} << 20);
    constexpr std::size_t onePiece = std::size_t{1} << 20;
    auto const proxy = proxyWith(0ms);
    auto const client = connectToLoopback(proxy->port());
    auto const host = accept();

    proxy->stall();
    std::jthread const sender([&client] { say(client, std::string(size, 'x')); });
    auto const traffic =
        proxy->waitUntil([](Traffic const &now) { return now.towardsHost.received >= DelayLine::capacity; });
    EXPECT_LT(traffic.towardsHost.received, DelayLine::capacity + onePiece);

    proxy->resume();
    EXPECT_EQ(hear(host, size).size(), size);
}

TEST_F(DelayProxyTest, aHalfClosedConnectionStillCarriesTheAnswer)
{
    auto const proxy = proxyWith(1ms);
    auto const client = connectToLoopback(proxy->port());
    auto const host = accept();

    say(client, "all");
    ::shutdown(client.get(), SHUT_WR);
    EXPECT_EQ(hear(host, 100), "all");
    say(host, "understood");
    EXPECT_EQ(hear(client, 10), "understood");
    EXPECT_EQ(proxy->traffic().open, 1U);
}

TEST_F(DelayProxyTest, aConnectionIsOverWhenBothSidesHaveEndedIt)
{
    auto const proxy = proxyWith(1ms);
    auto client = connectToLoopback(proxy->port());
    auto host = accept();

    say(host, "bye");
    host = FileDescriptor();
    EXPECT_EQ(hear(client, 100), "bye");
    client = FileDescriptor();

    auto const traffic = proxy->waitUntil([](Traffic const &now) { return now.open == 0; });
    EXPECT_EQ(traffic.connections, 1U);
}

TEST_F(DelayProxyTest, aResetByTheServerReachesTheClient)
{
    auto const proxy = proxyWith(1ms);
    auto const client = connectToLoopback(proxy->port());
    auto host = accept();

    resetWhenClosed(host);
    host = FileDescriptor();

    EXPECT_EQ(errorOfRead(client), ECONNRESET);
    proxy->waitUntil([](Traffic const &now) { return now.open == 0; });
}

TEST_F(DelayProxyTest, aResetByTheClientReachesTheServer)
{
    auto const proxy = proxyWith(1ms);
    auto client = connectToLoopback(proxy->port());
    auto const host = accept();

    resetWhenClosed(client);
    client = FileDescriptor();

    EXPECT_EQ(errorOfRead(host), ECONNRESET);
}

TEST_F(DelayProxyTest, withoutAServerTheClientIsReset)
{
    auto const nobody = reserveLoopbackPort();
    DelayProxy const proxy(portOf(nobody), 1ms);
    auto const client = connectToLoopback(proxy.port());

    EXPECT_EQ(errorOfRead(client), ECONNRESET);
}

TEST_F(DelayProxyTest, aCutEndsTheConnectionForBothSides)
{
    auto const proxy = proxyWith(1h);
    auto const waiting = connectToLoopback(proxy->port());
    proxy->setRoundTrip(0ms);
    auto const client = connectToLoopback(proxy->port());
    auto const host = accept();

    proxy->cut();
    EXPECT_EQ(proxy->traffic().open, 0U);
    EXPECT_EQ(errorOfRead(waiting), 0);
    EXPECT_EQ(errorOfRead(client), 0);
    EXPECT_EQ(errorOfRead(host), 0);
}

TEST_F(DelayProxyTest, aCutWithResetIsSeenAsOne)
{
    auto const proxy = proxyWith(0ms);
    auto const client = connectToLoopback(proxy->port());
    auto const host = accept();

    proxy->cut(Ending::reset);
    EXPECT_EQ(errorOfRead(client), ECONNRESET);
    EXPECT_EQ(errorOfRead(host), ECONNRESET);
}

TEST_F(DelayProxyTest, newConnectionsAreTakenAfterACut)
{
    auto const proxy = proxyWith(0ms);
    auto const before = connectToLoopback(proxy->port());
    auto const lost = accept();
    proxy->cut();

    auto const client = connectToLoopback(proxy->port());
    say(client, "again");
    EXPECT_EQ(hear(accept(), 5), "again");
}

TEST_F(DelayProxyTest, itCountsConnectionsAndBytes)
{
    auto const proxy = proxyWith(0ms);
    auto const first = connectToLoopback(proxy->port());
    auto const host = accept();
    auto const second = connectToLoopback(proxy->port());
    say(first, "1234");
    hear(host, 4);
    say(host, "567");
    hear(first, 3);

    auto const traffic =
        proxy->waitUntil([](Traffic const &now) { return now.connections == 2 && now.towardsClient.delivered == 3; });
    EXPECT_EQ(traffic.open, 2U);
    EXPECT_EQ(traffic.towardsHost.received, 4U);
    EXPECT_EQ(traffic.towardsHost.delivered, 4U);
    EXPECT_EQ(traffic.towardsClient.received, 3U);
}

TEST_F(DelayProxyTest, nobodyListensWhenItIsGone)
{
    auto proxy = proxyWith(1h);
    auto const port = proxy->port();
    auto const client = connectToLoopback(port);
    proxy.reset();

    EXPECT_EQ(errorOfRead(client), 0);
    try {
        connectToLoopback(port);
        FAIL() << "somebody listens";
    } catch (std::system_error const &error) {
        EXPECT_EQ(error.code().value(), ECONNREFUSED);
    }
}

} // namespace

} // namespace tw::test
