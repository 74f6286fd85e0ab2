#pragma once

#include "TWEngine/Shell/LineSpeed.h"

namespace tw {

/// How much of a long answer a host may send ahead of what has arrived.
///
/// The host sends what it has been granted and no more. The grants follow the line: at most what it carries in
/// LineSpeed::ahead is in flight, beside what is under way for a round trip. So an answer that is not wanted any more
/// is off the line soon, and one that is wanted fills the line.
///
/// A pure machine. All amounts count from the start of the answer.
class Pace {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// The most that is ever in flight: with a round trip of 100 ms, 40 MB/s.
    static constexpr std::size_t largestWindow = 4U << 20U;

    /// The answer is asked for `now`.
    Pace(LineSpeed const &line, Time now);

    /// To be granted along with the request.
    std::size_t first() const noexcept { return granted; }

    /// Notes how many bytes have arrived. Returns how many more to grant; 0 as long as enough is granted: every grant
    /// costs the host a process.
    std::size_t arrived(std::size_t bytes, Time now);

private:
    void startMeasuring(std::size_t bytes, Time now);
    void measure(std::size_t bytes, Time now);
    std::size_t window() const;

    double speed;
    LineSpeed::Seconds roundTrip; ///< 0: not known
    std::size_t granted = 0;

    // The last measurement.
    Time measuredAt;
    std::size_t measuredBytes = 0;
    bool isMeasured = false; ///< since the line was idle last
};

} // namespace tw
