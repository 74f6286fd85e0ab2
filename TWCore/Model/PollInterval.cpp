#include "TWCore/Model/PollInterval.h"

#include <algorithm>

namespace tw {

namespace {

/// Of the newest cost in the average: one slow probe does not slow all others down.
constexpr double weightOfNewest = 0.3;

} // namespace

double PollInterval::seconds() const
{
    if (fastProbesLeft > 0 || !smoothed)
        return floor;
    return std::clamp(*smoothed / dutyCycle, floor, ceiling);
}

bool PollInterval::hasBackedOff() const
{
    return seconds() > floor;
}

void PollInterval::observed(double cost)
{
    auto const newest = std::max(cost, 0.0);
    smoothed = smoothed ? weightOfNewest * newest + (1 - weightOfNewest) * *smoothed : newest;
    fastProbesLeft = std::max(fastProbesLeft - 1, 0);
}

} // namespace tw
