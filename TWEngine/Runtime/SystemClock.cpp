#include "TWEngine/Runtime/SystemClock.h"

#include "TWEngine/Runtime/Completion.h"
#include "TWEngine/Runtime/IoThread.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

namespace tw {

namespace {

using Timer = boost::asio::steady_timer;
using Wait = Completion<Done>;

using Time = std::chrono::steady_clock::time_point;

/// Sleeps end at whole milliseconds, so that those that end together wake the I/O thread once.
constexpr std::chrono::milliseconds step{1};

/// The end of a sleep that begins now. A sleep that would end after the last time ends then.
Time endOf(std::chrono::nanoseconds duration)
{
    auto const now = std::chrono::steady_clock::now();
    auto const latest = Time::max() - step;
    return duration < latest - now ? std::chrono::ceil<std::chrono::milliseconds>(now + duration) : Time::max();
}

Task<void> sleepOn(boost::asio::io_context *io, std::chrono::nanoseconds duration)
{
    if (duration <= std::chrono::nanoseconds::zero())
        co_return;
    // Only this task touches the timer. A timer that is set here and not on the I/O thread does not wake that thread.
    Timer timer(*io, endOf(duration));
    auto const elapsed = std::make_shared<Wait>();
    timer.async_wait([elapsed](boost::system::error_code) { elapsed->succeed({}); });
    co_await Wait::wait(elapsed);
}

} // namespace

Task<void> SystemClock::sleep(std::chrono::nanoseconds duration)
{
    return sleepOn(&io.context(), duration);
}

} // namespace tw
