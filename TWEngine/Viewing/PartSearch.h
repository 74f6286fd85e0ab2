#pragma once

#include "TWCore/Shell/FileSearch.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// Looks through a part of a file piece by piece: for bytes from its end for the last match, for an expression always
/// from its beginning.
class PartSearch {
public:
    /// A piece stays in the processor's cache while it is read and searched.
    static constexpr std::int64_t pieceBytes = 256 * 1024;

    PartSearch(FileSearch::Sought what, FileSearch::Part where, FileSearch::Which wanted);

    /// The next piece to read; nothing when the search has ended.
    std::optional<FileSearch::Part> next() const;

    /// Looks through that piece, and goes on behind it. Throws ByteExpression::TooSlow.
    void take(FileSearch::Part piece, std::string_view content);

    /// The match, when there is no next piece.
    std::optional<std::int64_t> found() const { return match; }

    /// Of the part.
    std::int64_t end() const noexcept { return part.to; }

private:
    void takeForBytes(FileSearch::Part piece, std::string_view content);
    void takeForExpression(FileSearch::Part piece, std::string_view content);

    FileSearch::Sought sought;
    FileSearch::Part part; ///< in which a match counts
    FileSearch::Part left; ///< what is still to be read
    FileSearch::Which which;
    std::optional<std::int64_t> match;
    bool isOver = false;
};

} // namespace tw
