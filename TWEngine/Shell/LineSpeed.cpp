#include "TWEngine/Shell/LineSpeed.h"

#include <algorithm>

namespace tw {

namespace {

/// An answer this short takes a round trip and nothing else.
constexpr std::size_t shortAnswer = 4U << 10U;

/// An answer this long says something of the speed: at 10 MB/s it takes 3 ms.
constexpr std::size_t longAnswer = 32U << 10U;

/// Below it, clocks and schedulers decide.
constexpr LineSpeed::Seconds shortestMeasure{0.001};

} // namespace

void LineSpeed::note(std::size_t bytes, Seconds elapsed)
{
    if (bytes < shortAnswer && elapsed > Seconds(0))
        shortest = shortest == Seconds(0) ? elapsed : std::min(shortest, elapsed);
    if (bytes < longAnswer)
        return;
    auto const carried = static_cast<double>(bytes) / std::max(elapsed - shortest, shortestMeasure).count();
    // What has been carried could be carried; a slow answer may be the fault of the host.
    speed = carried > speed ? carried : (3 * speed + carried) / 4;
}

std::size_t LineSpeed::room(std::size_t most) const
{
    auto const carried = std::min(speed * ahead.count(), static_cast<double>(most));
    return std::min(most, std::max(leastRoom, static_cast<std::size_t>(carried)));
}

} // namespace tw
