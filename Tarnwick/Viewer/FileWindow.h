#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

namespace tw {

/// The piece of a file that a viewer has in memory: all bytes between two offsets. It slides both ways over a file of
/// any size, and what it slides away from is forgotten.
class FileWindow {
public:
    /// Every read of a text.
    static constexpr std::size_t chunkBytes = 0x40000;

    /// In memory at a time, apart from the chunk that was read last.
    static constexpr std::size_t mostBytes = 0x2000000;

    std::int64_t begin() const noexcept { return first; }

    std::int64_t end() const noexcept { return first + static_cast<std::int64_t>(size); }

    bool isEmpty() const noexcept { return size == 0; }

    bool contains(std::int64_t offset) const noexcept { return offset >= begin() && offset < end(); }

    void replace(std::int64_t offset, std::string bytes);

    /// Goes on behind the end, and forgets at the beginning.
    void append(std::string bytes);

    /// Goes on before the beginning, and forgets at the end.
    void prepend(std::string bytes);

    /// Forgets everything from `offset` on.
    void cutAt(std::int64_t offset);

    /// What there is between two offsets.
    std::string copy(std::int64_t from, std::int64_t to) const;

    /// The first `byte` between two offsets.
    std::optional<std::int64_t> find(char byte, std::int64_t from, std::int64_t to) const;

    /// The last `byte` between two offsets.
    std::optional<std::int64_t> findLast(char byte, std::int64_t from, std::int64_t to) const;

private:
    struct Piece {
        std::int64_t begin;
        std::string bytes;

        std::int64_t end() const noexcept { return begin + static_cast<std::int64_t>(bytes.size()); }
    };

    using Pieces = std::deque<Piece>;

    /// The piece with `offset`, or the end.
    Pieces::const_iterator pieceAt(std::int64_t offset) const;

    Pieces pieces; ///< none is empty
    std::int64_t first = 0;
    std::size_t size = 0;
};

} // namespace tw
