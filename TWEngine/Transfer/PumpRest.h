#pragma once

#include <chrono>
#include <cstddef>

namespace tw {

/// How long the pump of a tar pipe leaves its pipes alone after a piece.
///
/// Programs write and read some 10 KiB at a time. To be woken for each of these costs more than to move the bytes. So
/// the pump rests while bytes and room for them gather in the pipes.
///
/// A pure machine.
class PumpRest {
public:
    using Time = std::chrono::microseconds;

    /// With pipes of 1 MiB it does not hold up a line of 500 MB/s, and faster ones fill the pieces, which ends the
    /// rest.
    static constexpr Time longest{2000};

    /// The time to rest after `passed` bytes went of the `most` that were asked for: longer after a small piece,
    /// shorter after one that is nearly full.
    Time after(std::size_t passed, std::size_t most);

private:
    Time time{0};
};

} // namespace tw
