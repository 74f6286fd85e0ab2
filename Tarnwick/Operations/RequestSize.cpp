#include "Tarnwick/Operations/RequestSize.h"

#include <algorithm>

namespace tw {

namespace {

/// A request may be quick by chance, so the next one is not of any size.
constexpr double mostGrowth = 16;
constexpr double leastGrowth = 1.0 / 16;

} // namespace

void RequestSize::took(std::chrono::nanoseconds time) noexcept
{
    auto const nanoseconds = static_cast<double>(std::max<std::int64_t>(time.count(), 1));
    auto const aimed = static_cast<double>(std::chrono::nanoseconds(aim).count());
    auto const growth = std::clamp(aimed / nanoseconds, leastGrowth, mostGrowth);
    size = static_cast<std::size_t>(std::clamp(static_cast<double>(size) * growth, 1.0, static_cast<double>(most)));
}

} // namespace tw
