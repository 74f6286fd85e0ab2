#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace tw::test {

/// How one way of a connection ends.
enum class Ending {
    orderly, ///< nothing more is sent, as after closing or half-closing
    reset    ///< the connection is reset, in both directions
};

/// The bytes in flight in one direction: pieces in their order, each with its time of arrival.
class DelayLine {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// With 64 MiB in flight, even a round trip of 200 ms allows 640 MB/s, more than ssh encrypts.
    static constexpr std::size_t capacity = std::size_t{64} << 20;

    /// Keeps the order: a piece never arrives before an earlier piece, whatever its time. Ignored after an end.
    void put(std::string bytes, Time due);

    /// Ends the line after the pieces in flight. A reset may follow an orderly end.
    void end(Ending how, Time due);

    /// True if the sender has to wait.
    bool isFull() const noexcept { return waiting >= capacity; }

    std::optional<Ending> ending() const noexcept { return last; }

    /// When the next piece, or the end after the last piece, arrives. Nothing if nothing is in flight.
    std::optional<Time> due() const;

    /// The undelivered bytes of the next piece; empty if only the end, or nothing, is left.
    std::string_view front() const;

    /// Removes delivered bytes from the front.
    void drop(std::size_t bytes);

private:
    struct Piece {
        std::string bytes;
        Time due;
    };

    Time notBefore(Time due) const { return pieces.empty() ? due : std::max(due, pieces.back().due); }

    std::deque<Piece> pieces;
    std::size_t delivered = 0; ///< bytes of the first piece
    std::size_t waiting = 0;   ///< bytes of all pieces
    std::optional<Ending> last;
    Time endDue;
};

} // namespace tw::test
