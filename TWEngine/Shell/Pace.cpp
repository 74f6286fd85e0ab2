#include "TWEngine/Shell/Pace.h"

#include <algorithm>

namespace tw {

namespace {

/// Long enough for more than one read, short enough to find out about a fast line in two round trips.
constexpr LineSpeed::Seconds measurePeriod{0.02};

} // namespace

Pace::Pace(LineSpeed const &line, Time now)
    : speed(line.bytesPerSecond()), roundTrip(line.roundTrip()), granted(window()), measuredAt(now)
{
}

std::size_t Pace::arrived(std::size_t bytes, Time now)
{
    measure(bytes, now);
    auto const inFlight = granted - std::min(granted, bytes);
    auto const allowed = window();
    if (inFlight > allowed / 2)
        return 0;
    auto const more = allowed - inFlight;
    granted += more;
    return more;
}

void Pace::measure(std::size_t bytes, Time now)
{
    LineSpeed::Seconds const period = now - measuredAt;
    if (period < measurePeriod || bytes < measuredBytes)
        return;
    auto const carried = static_cast<double>(bytes - measuredBytes) / period.count();
    speed = carried > speed ? carried : (speed + carried) / 2;
    measuredAt = now;
    measuredBytes = bytes;
}

std::size_t Pace::window() const
{
    auto const carried = speed * (LineSpeed::ahead + roundTrip).count();
    return std::clamp(static_cast<std::size_t>(std::min(carried, static_cast<double>(largestWindow))),
                      LineSpeed::leastRoom, largestWindow);
}

} // namespace tw
