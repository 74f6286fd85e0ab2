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
    reset    ///< the connection is gone, in both ways
};

/// What is on its way in one direction: pieces in their order, each with the time of its arrival.
class DelayLine {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// With 64 MiB on the way even a round trip of 200 ms leaves room for 640 MB/s, more than ssh encrypts.
    static constexpr std::size_t capacity = std::size_t{64} << 20;

    /// Nothing overtakes: what is put later does not arrive earlier, whatever its time. Nothing follows an end.
    void put(std::string bytes, Time due);

    /// Comes behind what is on the way. A reset may follow an orderly end.
    void end(Ending how, Time due);

    /// Whether the sender has to wait, as with any line.
    bool isFull() const noexcept { return waiting >= capacity; }

    std::optional<Ending> ending() const noexcept { return last; }

    /// When the next piece, or the end behind the last one, arrives. Nothing if there is nothing on the way.
    std::optional<Time> due() const;

    /// The bytes of the next piece that are not delivered yet; empty if only the end, or nothing, is left.
    std::string_view front() const;

    /// That many bytes of the front are delivered.
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
