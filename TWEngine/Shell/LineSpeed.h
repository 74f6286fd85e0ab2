#pragma once

#include <chrono>
#include <cstddef>

namespace tw {

/// What is known of the line to a host, from the answers that have come over it, and how much of it an answer may fill.
///
/// An answer that a person has left still has to come off the line before the next one. So no answer is allowed more
/// than what the line carries in 0.15 s, unless the host is asked for more as the bytes arrive.
///
/// A pure estimator. The measured times include the work of the host, so the line may be much faster than
/// the estimate.
class LineSpeed {
public:
    using Seconds = std::chrono::duration<double>;

    /// What may be in flight, as a time of the line.
    static constexpr Seconds ahead{0.15};

    /// What is allowed on a line that nothing is known of, or that is slow: 0.2 s at 2 Mbit/s.
    static constexpr std::size_t leastRoom = 48U << 10U;

    /// Notes an answer of `bytes` that was there `elapsed` after its request was written.
    void note(std::size_t bytes, Seconds elapsed);

    /// How many bytes an answer may have: what the line carries in `ahead`, within `leastRoom` and `most`.
    std::size_t room(std::size_t most) const;

    /// 0: not known.
    double bytesPerSecond() const noexcept { return speed; }

    /// The shortest so far; 0: not known.
    Seconds roundTrip() const noexcept { return shortest; }

private:
    double speed = 0;
    Seconds shortest{0};
};

} // namespace tw
