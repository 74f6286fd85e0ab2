#include "TWEngine/Runtime/ProcessEnd.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <latch>
#include <thread>

#include <sys/socket.h>

namespace tw::test {
namespace {

/// Ends this process while another thread listens to a socket as the toolkit's thread does: an error ends the process.
[[noreturn]] void endWithAListener()
{
    std::array<int, 2> ends{};
    constexpr auto kind = SOCK_STREAM | SOCK_NONBLOCK;
    if (::socketpair(AF_UNIX, kind, 0, ends.data()) != 0)
        std::_Exit(2);
    // More to close after that one, so that the listener has the time to notice.
    for (int further = 0; further < 300; ++further) {
        std::array<int, 2> pair{};
        if (::socketpair(AF_UNIX, kind, 0, pair.data()) != 0)
            std::_Exit(2);
    }
    std::latch isListening(1);
    std::thread([&isListening, end = ends[0]] {
        isListening.count_down();
        char byte = 0;
        for (;;) {
            if (::recv(end, &byte, 1, MSG_DONTWAIT) >= 0 || errno != EAGAIN)
                std::_Exit(1);
        }
    }).detach();
    isListening.wait();
    endProcess(7);
}

TEST(ProcessEndTest, aThreadThatStillListensDoesNotChangeTheStatus)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a fork would have threads of other tests in its memory
    for (int round = 0; round < 5; ++round)
        EXPECT_EXIT(endWithAListener(), testing::ExitedWithCode(7), "");
}

} // namespace
} // namespace tw::test
