#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>

namespace tw {

/// The speed of some work over its last seconds, and the time that is left at that speed.
class TransferPace {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Speed is taken over this: less, and the numbers jump; more, and a line that has become slow still looks fast.
    static constexpr std::chrono::seconds window{5};

    /// Before there is this much to judge by, nothing is said.
    static constexpr std::chrono::seconds leastToJudgeBy{1};

    /// What is done by now; also without progress, so that a stall is seen. Fewer bytes than before begin anew.
    void note(Time now, std::int64_t bytes);

    /// Bytes a second.
    std::optional<double> speed() const;

    /// Nothing where the work stands still.
    std::optional<std::chrono::seconds> timeLeft(std::int64_t total) const;

private:
    struct Sample {
        Time at;
        std::int64_t bytes = 0;
    };

    /// Between two samples, so that there are few of them however often the work reports.
    static constexpr std::chrono::milliseconds step{200};

    std::deque<Sample> samples; ///< the oldest is the last one before the window
};

} // namespace tw
