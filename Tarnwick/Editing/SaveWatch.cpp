#include "Tarnwick/Editing/SaveWatch.h"

namespace tw {

SaveWatch::Finding SaveWatch::tick(std::optional<Stamp> now, Time time)
{
    if (!now)
        return Finding::nothing;
    if (!lastSeen) {
        lastSeen = now;
        return Finding::nothing;
    }
    if (now != lastSeen) {
        lastSeen = now;
        pendingSince = time;
        return Finding::changed;
    }
    if (!pendingSince || time - *pendingSince < settleTime)
        return Finding::nothing;
    pendingSince.reset();
    return Finding::settled;
}

std::optional<std::chrono::milliseconds> SaveWatch::untilSettled(Time time) const
{
    if (!pendingSince || time - *pendingSince >= settleTime)
        return std::nullopt;
    return std::chrono::ceil<std::chrono::milliseconds>(*pendingSince + settleTime - time);
}

} // namespace tw
