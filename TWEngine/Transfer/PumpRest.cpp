#include "TWEngine/Transfer/PumpRest.h"

#include <algorithm>

namespace tw {

namespace {

/// A shorter rest is no longer than being woken takes.
constexpr PumpRest::Time shortest{125};

} // namespace

PumpRest::Time PumpRest::after(std::size_t passed, std::size_t most)
{
    if (passed < most / 4)
        time = std::clamp(2 * time, shortest, longest);
    else if (passed > most - most / 4)
        time = time > shortest ? time / 2 : Time(0);
    return time;
}

} // namespace tw
