#include "TWEngine/Viewing/PartSearch.h"

#include "TWCore/Shell/ByteExpression.h"

#include <algorithm>
#include <cstring>

namespace tw {

using FileSearch::Part;
using FileSearch::Sought;
using FileSearch::Which;

PartSearch::PartSearch(Sought what, Part where, Which wanted)
    : sought(std::move(what)),
      part(where),
      left(sought.kind == Sought::Kind::expression ? FileSearch::withContext(where) : where),
      which(wanted)
{
}

std::optional<Part> PartSearch::next() const
{
    auto const isBytes = sought.kind == Sought::Kind::bytes;
    auto const least = isBytes ? std::ssize(sought.pattern) : 1;
    if (isOver || left.to - left.from < least)
        return std::nullopt;
    if (isBytes && which == Which::last)
        return Part{std::max(left.to - pieceBytes, left.from), left.to};
    return Part{left.from, std::min(left.from + pieceBytes, left.to)};
}

void PartSearch::take(Part piece, std::string_view content)
{
    if (sought.kind == Sought::Kind::bytes)
        takeForBytes(piece, content);
    else
        takeForExpression(piece, content);
}

/// The next piece has the end of this one too, which may be the beginning of a match.
void PartSearch::takeForBytes(Part piece, std::string_view content)
{
    auto const &bytes = sought.pattern;
    auto const overlap = std::ssize(bytes) - 1;
    if (which == Which::first) {
        left.from = piece.to == left.to ? left.to : piece.to - overlap;
        auto const *const at = ::memmem(content.data(), content.size(), bytes.data(), bytes.size());
        if (at)
            match = piece.from + (static_cast<char const *>(at) - content.data());
    } else {
        left.to = piece.from == left.from ? left.from : piece.from + overlap;
        if (auto const at = content.rfind(bytes); at != std::string_view::npos)
            match = piece.from + static_cast<std::int64_t>(at);
    }
    isOver = match.has_value();
}

/// The next piece begins with the last line of this one, which may go on. A line that fills a piece is cut.
void PartSearch::takeForExpression(Part piece, std::string_view content)
{
    auto const isLast = piece.to == left.to || std::ssize(content) < piece.to - piece.from;
    auto const lastLine = content.rfind('\n') + 1; // 0 without a line end
    if (!isLast && lastLine > 0)
        content = content.substr(0, lastLine);
    ByteExpression::eachMatch(sought.pattern, content, [&](ByteExpression::Match each) {
        auto const offset = piece.from + static_cast<std::int64_t>(each.from);
        if (offset >= part.to)
            return false;
        if (offset < part.from)
            return true;
        match = offset;
        return which == Which::last;
    });
    left.from = piece.from + std::ssize(content);
    isOver = isLast || left.from >= part.to || (match && which == Which::first);
}

} // namespace tw
