#include "TWEngine/Runtime/SystemClock.h"

#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Runtime/Completion.h"
#include "TWEngine/Runtime/IoThread.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

namespace tw {

namespace {

using Timer = boost::asio::steady_timer;
using Wait = Completion<Done>;

/// The end of a sleep that begins now; one without end would be past the last time that can be told.
std::chrono::steady_clock::time_point endOf(std::chrono::nanoseconds duration)
{
    auto const now = std::chrono::steady_clock::now();
    auto const latest = std::chrono::steady_clock::time_point::max();
    return duration < latest - now ? now + duration : latest;
}

Task<void> sleepOn(boost::asio::io_context *io, std::chrono::nanoseconds duration)
{
    if (duration <= std::chrono::nanoseconds::zero())
        co_return;
    auto const timer = std::make_shared<Timer>(*io, endOf(duration));
    auto const elapsed = std::make_shared<Wait>();
    // A timer is not safe to touch from two threads: from here on it belongs to the I/O thread.
    boost::asio::post(*io, [timer, elapsed] {
        timer->async_wait([timer, elapsed](boost::system::error_code) { elapsed->succeed({}); });
    });
    try {
        co_await Wait::wait(elapsed);
    } catch (Cancelled const &) {
        // Off the list now, rather than when it would have ended.
        boost::asio::post(*io, [timer] { timer->cancel(); });
        throw;
    }
}

} // namespace

Task<void> SystemClock::sleep(std::chrono::nanoseconds duration)
{
    return sleepOn(&io.context(), duration);
}

} // namespace tw
