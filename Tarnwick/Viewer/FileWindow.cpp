#include "Tarnwick/Viewer/FileWindow.h"

#include <algorithm>
#include <string_view>

namespace tw {

void FileWindow::replace(std::int64_t offset, std::string bytes)
{
    pieces.clear();
    first = offset;
    size = 0;
    append(std::move(bytes));
}

void FileWindow::append(std::string bytes)
{
    if (bytes.empty())
        return;
    auto const begin = end();
    size += bytes.size();
    pieces.push_back({begin, std::move(bytes)});
    while (pieces.size() > 1 && size > mostBytes + pieces.back().bytes.size()) {
        size -= pieces.front().bytes.size();
        pieces.pop_front();
        first = pieces.front().begin;
    }
}

void FileWindow::prepend(std::string bytes)
{
    if (bytes.empty())
        return;
    size += bytes.size();
    first -= static_cast<std::int64_t>(bytes.size());
    pieces.push_front({first, std::move(bytes)});
    while (pieces.size() > 1 && size > mostBytes + pieces.front().bytes.size()) {
        size -= pieces.back().bytes.size();
        pieces.pop_back();
    }
}

void FileWindow::cutAt(std::int64_t offset)
{
    if (offset < end())
        replace(std::min(first, offset), copy(begin(), offset));
}

FileWindow::Pieces::const_iterator FileWindow::pieceAt(std::int64_t offset) const
{
    return std::ranges::find_if(pieces, [offset](Piece const &piece) { return offset < piece.end(); });
}

std::string FileWindow::copy(std::int64_t from, std::int64_t to) const
{
    from = std::max(from, begin());
    to = std::min(to, end());
    std::string bytes;
    for (auto piece = pieceAt(from); piece != pieces.end() && from < to; ++piece) {
        auto const until = std::min(to, piece->end());
        bytes.append(piece->bytes, static_cast<std::size_t>(from - piece->begin),
                     static_cast<std::size_t>(until - from));
        from = until;
    }
    return bytes;
}

std::optional<std::int64_t> FileWindow::find(char byte, std::int64_t from, std::int64_t to) const
{
    from = std::max(from, begin());
    to = std::min(to, end());
    for (auto piece = pieceAt(from); piece != pieces.end() && from < to; ++piece) {
        auto const at = piece->bytes.find(byte, static_cast<std::size_t>(from - piece->begin));
        if (at != std::string::npos) {
            auto const offset = piece->begin + static_cast<std::int64_t>(at);
            return offset < to ? std::optional(offset) : std::nullopt;
        }
        from = piece->end();
    }
    return std::nullopt;
}

std::optional<std::int64_t> FileWindow::findLast(char byte, std::int64_t from, std::int64_t to) const
{
    from = std::max(from, begin());
    to = std::min(to, end());
    while (from < to) {
        auto const piece = pieceAt(to - 1);
        auto const stretch = std::string_view(piece->bytes).substr(0, static_cast<std::size_t>(to - piece->begin));
        if (auto const at = stretch.rfind(byte); at != std::string_view::npos) {
            auto const offset = piece->begin + static_cast<std::int64_t>(at);
            return offset >= from ? std::optional(offset) : std::nullopt;
        }
        to = piece->begin;
    }
    return std::nullopt;
}

} // namespace tw
