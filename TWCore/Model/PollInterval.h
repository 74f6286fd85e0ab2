#pragma once

#include <optional>

namespace tw {

/// How often a host is asked whether a folder has changed: so seldom that the questions take a small share of the
/// time, and often for a while after a change, since changes come in bursts. All times are in seconds.
struct PollInterval {
    static constexpr double floor = 3.0;
    static constexpr double ceiling = 30.0;
    /// The share of the time that probes may take.
    static constexpr double dutyCycle = 0.02;
    static constexpr int fastProbesAfterChange = 5;

    std::optional<double> smoothed = {}; ///< what a probe costs; nothing before the first
    int fastProbesLeft = 0;

    /// From the end of a probe to the next.
    double seconds() const;

    /// Whether probes are slow enough that the interval is longer than the shortest.
    bool hasBackedOff() const;

    /// Notes what a probe has cost. A negative cost, from a clock that was set, counts as none.
    void observed(double cost);

    void sawChange() { fastProbesLeft = fastProbesAfterChange; }

    void reset() { *this = {}; }
};

} // namespace tw
