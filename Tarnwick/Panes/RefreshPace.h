#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

namespace tw {

/// When a folder of this machine that changes is read again: once for a burst of changes, and never so often that
/// reading takes more than a small share of the time.
///
/// Threads: none of its own; used by one owner at a time.
class RefreshPace {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::steady_clock::duration;

    /// After the last change of a burst.
    static constexpr std::chrono::milliseconds quiet{300};
    /// After the first: a folder that never comes to rest is to be seen too.
    static constexpr std::chrono::milliseconds latest{1000};
    /// Without any event: what is on another machine, and files that grow, change without one.
    static constexpr std::chrono::seconds lookAnyway{4};
    /// Times the cost of the last reading: a folder of 100,000 files that changes all the time takes a tenth of a core.
    static constexpr int restAfterReading = 9;
    /// The same for reading without an event, which finds nothing new as a rule.
    static constexpr int restBeforeLook = 50;
    static constexpr std::chrono::seconds longestRest{30};

    void changed(Time now)
    {
        first = first.value_or(now);
        last = now;
    }

    /// What has changed so far is being read.
    void readingBegan() { first.reset(); }

    void readingEnded(Time began, Time ended)
    {
        cost = ended - began;
        lastEnd = ended;
    }

    /// When what has changed is to be read; nothing if there is nothing.
    std::optional<Time> due() const
    {
        if (!first)
            return std::nullopt;
        auto const wanted = std::min(last + quiet, *first + latest);
        return std::max(wanted, lastEnd + std::min<Duration>(cost * restAfterReading, longestRest));
    }

    /// From the end of a reading to the next one without an event.
    Duration untilLook() const { return std::clamp<Duration>(cost * restBeforeLook, lookAnyway, longestRest); }

private:
    std::optional<Time> first; ///< change since the last reading began
    Time last;
    Time lastEnd;
    Duration cost{};
};

} // namespace tw
