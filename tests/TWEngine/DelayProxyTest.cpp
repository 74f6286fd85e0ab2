#include "tests/hosts/DelayProxy.h"

#include "tests/hosts/Loopback.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <poll.h>
#include <sys/socket.h>

namespace tw::test {

using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

/// What figures and other tests take for granted: the delay is there, and a stall stalls.
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

/// The error of a read that does not wait: EAGAIN while there is nothing to read.
int errorOfRead(FileDescriptor const &socket)
{
    char byte = 0;
    return ::recv(socket.get(), &byte, 1, MSG_DONTWAIT) < 0 ? errno : 0;
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
    EXPECT_EQ(errorOfRead(host), EAGAIN);
    EXPECT_EQ(errorOfRead(client), EAGAIN);

    proxy->resume();
    EXPECT_EQ(hear(host, 8), "question");
    EXPECT_EQ(hear(client, 6), "answer");
}

} // namespace

} // namespace tw::test
