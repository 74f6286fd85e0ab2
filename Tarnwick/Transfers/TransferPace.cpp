#include "Tarnwick/Transfers/TransferPace.h"

#include <algorithm>
#include <cmath>

namespace tw {

void TransferPace::note(Time now, std::int64_t bytes)
{
    if (!samples.empty() && bytes < samples.back().bytes)
        samples.clear();
    // The newest one moves along until it is a step behind the one before it.
    if (samples.size() > 1 && samples.back().at - samples[samples.size() - 2].at < step)
        samples.back() = {now, bytes};
    else
        samples.push_back({now, bytes});
    while (samples.size() > 2 && samples[1].at <= now - window)
        samples.pop_front();
}

std::optional<double> TransferPace::speed() const
{
    if (samples.empty())
        return std::nullopt;
    auto const &first = samples.front();
    auto const &last = samples.back();
    if (last.at - first.at < leastToJudgeBy)
        return std::nullopt;
    return static_cast<double>(last.bytes - first.bytes) / std::chrono::duration<double>(last.at - first.at).count();
}

std::optional<std::chrono::seconds> TransferPace::timeLeft(std::int64_t total) const
{
    /// More than anybody waits for, and far from what a number can hold.
    static constexpr double mostSeconds = 1e8;
    auto const rate = speed();
    if (!rate || *rate <= 0)
        return std::nullopt;
    auto const left = static_cast<double>(std::max<std::int64_t>(total - samples.back().bytes, 0)) / *rate;
    return std::chrono::seconds(std::llround(std::min(left, mostSeconds)));
}

} // namespace tw
