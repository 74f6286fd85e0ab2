#include "TWEngine/Shell/Pace.h"

#include <algorithm>

namespace tw {

namespace {

/// Long enough for more than one read, short enough to find out about a fast line in two round trips.
constexpr LineSpeed::Seconds measurePeriod{0.02};

/// The client of ssh passes on pieces of up to 32 KiB, and several at once if it was held up. Over less than that, the
/// speed would be what this machine needs to pass them on, and a narrow line would get seconds of names to carry.
constexpr std::size_t measuredPiece = 32U << 10U;

/// The first bytes have the work of the host in their time, so a round trip that is guessed by them is bounded. A
/// longer bound lets more of a narrow line be in flight, a shorter one fills a far line later.
constexpr LineSpeed::Seconds longestGuess{0.05};

} // namespace

Pace::Pace(LineSpeed const &line, Time now)
    : speed(line.bytesPerSecond()), roundTrip(line.roundTrip()), granted(window())
{
    startMeasuring(0, now);
}

std::size_t Pace::arrived(std::size_t bytes, Time now)
{
    measure(bytes, now);
    // On a fast line all of a burst is there at once, and with all of it the speed is known. Half of it would get no
    // more than another half, a round trip later.
    if (!isMeasured && bytes < granted && now - measuredAt < measurePeriod)
        return 0;
    auto const inFlight = granted - std::min(granted, bytes);
    auto const allowed = window();
    if (inFlight > allowed / 2)
        return 0;
    auto const more = allowed - inFlight;
    granted += more;
    if (inFlight == 0)
        startMeasuring(bytes, now);
    return more;
}

/// The line is idle until the first bytes of a grant can be there: that is no slowness of the line.
void Pace::startMeasuring(std::size_t bytes, Time now)
{
    measuredAt = now + std::chrono::duration_cast<Time::duration>(roundTrip);
    measuredBytes = bytes;
    isMeasured = false;
}

void Pace::measure(std::size_t bytes, Time now)
{
    if (bytes <= measuredBytes)
        return;
    if (roundTrip == LineSpeed::Seconds(0)) {
        roundTrip = std::min<LineSpeed::Seconds>(now - measuredAt, longestGuess);
        measuredAt = now;
        measuredBytes = bytes;
        return;
    }
    LineSpeed::Seconds const period = now - measuredAt;
    bool const isLong = period >= measurePeriod || bytes >= granted;
    if (!isLong || bytes - measuredBytes < measuredPiece)
        return;
    auto const carried = static_cast<double>(bytes - measuredBytes) / std::max(period, measurePeriod).count();
    speed = carried > speed ? carried : (speed + carried) / 2;
    measuredAt = now;
    measuredBytes = bytes;
    isMeasured = true;
}

std::size_t Pace::window() const
{
    auto const carried = speed * (LineSpeed::ahead + roundTrip).count();
    return std::clamp(static_cast<std::size_t>(std::min(carried, static_cast<double>(largestWindow))),
                      LineSpeed::leastRoom, largestWindow);
}

} // namespace tw
