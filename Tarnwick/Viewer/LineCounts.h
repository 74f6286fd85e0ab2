#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace tw {

/// The numbers of the lines of a file, as far as it has been read from its beginning without a gap. A chunk that has
/// been read leaves one number behind, so a file of any length takes little room.
class LineCounts {
public:
    /// A place whose line number is known: so many line ends are before it.
    struct Mark {
        std::int64_t offset = 0;
        std::int64_t linesBefore = 0;
    };

    /// Counts a chunk if it goes on where the counting has come to.
    void note(std::int64_t offset, std::string_view bytes);

    /// Where the counting has come to.
    Mark const &end() const noexcept { return marks.back(); }

    /// The last mark from which line `number` (from 1 on) is found by reading on.
    Mark before(std::int64_t number) const;

    /// Forgets all numbers: the file is another one.
    void clear() { marks.assign(1, {}); }

private:
    std::vector<Mark> marks{1};
};

} // namespace tw
