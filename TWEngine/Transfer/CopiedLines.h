#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tw {

/// Counts the files in what `cp -v` prints: a line when it begins an entry, in quotes and without line ends in it.
class CopiedLines {
public:
    void take(std::string_view output);

    /// Entries that are whole, without folders. An empty folder counts as one, since its line looks like that of a
    /// file.
    std::int64_t files() const noexcept { return done; }

    /// Bytes so far.
    std::int64_t printed() const noexcept { return taken; }

private:
    /// Longer lines are compared by their beginning; a path has 4096 bytes.
    static constexpr std::size_t mostOfALine = 16384;

    void endLine();

    std::string line;
    std::string previous; ///< the line of the entry that may still be under way
    std::int64_t done = 0;
    std::int64_t taken = 0;
};

} // namespace tw
