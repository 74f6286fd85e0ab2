#pragma once

#include "TWCore/Model/TextDecoding.h"
#include "Tarnwick/Viewer/FileWindow.h"
#include "Tarnwick/Viewer/ViewerMode.h"

#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// Where lines begin in the window on a file, and what they say.
///
/// A line is found from any offset by what lies near it, so that a place in the middle of a file of any size costs the
/// same as its beginning. For that no line is long: one that has no end for some kibibytes is cut into several, at
/// places that depend on the file alone and not on where the reading began. In hex, a line is 16 bytes.
///
/// Lifetime: the window outlives it.
class ViewedLines {
public:
    /// Without a line end, a line is cut at every multiple of this.
    static constexpr std::int64_t cutBytes = 0x2000;

    static constexpr std::int64_t hexBytes = 16;

    explicit ViewedLines(FileWindow const &bytes) : window(bytes) {}

    ViewerMode mode = ViewerMode::text;
    TextDecoding::Encoding encoding = TextDecoding::Encoding::utf8;

    /// The beginning of the line that has `offset`, at the beginning of the window at the latest.
    std::int64_t startOf(std::int64_t offset) const;

    /// The beginning of the next line, or the end of the window.
    std::int64_t endOf(std::int64_t start) const;

    /// The line that begins at `start`, as it is shown: without its end, tabs as they are, a sign for each other
    /// control character.
    std::u32string text(std::int64_t start) const;

    /// How many characters of such a line are before the one at `offset`.
    std::size_t charactersBefore(std::int64_t start, std::int64_t offset) const;

    /// Whether the line ends because the file says so, and not because it is cut.
    bool endsWithLineEnd(std::int64_t start) const;

    /// Behind the first line end between two offsets of the file.
    std::optional<std::int64_t> behindLineEnd(std::int64_t from, std::int64_t to) const;

private:
    std::optional<std::int64_t> behindLastLineEnd(std::int64_t from, std::int64_t to) const;
    std::optional<std::int64_t> behindLineEndAt(std::int64_t byte) const;
    std::int64_t cutNear(std::int64_t offset) const;
    std::u32string shown(std::string_view bytes) const;

    FileWindow const &window;
};

} // namespace tw
