#pragma once

#include <string>
#include <string_view>

namespace tw {

/// Bytes as text for display: UTF-8, with a replacement character (U+FFFD) for each invalid sequence.
///
/// An incomplete sequence is one invalid sequence; every other invalid byte is one of its own. Different bytes may
/// yield the same text, so a path for the file system is never converted.
std::string repaired(std::string_view bytes);

/// The same, with a visible sign for every control character, so that the text stays on one line: the symbol of the
/// character where Unicode has one, the symbol of a new line for other line ends, else the replacement character. Marks
/// that change the direction of the text, and characters without a width, have the replacement character too: a name
/// cannot pass for another one. What shapes its neighbours stays, such as a joiner in a word or in an emoji.
std::string onOneLine(std::string_view bytes);

/// The same, with a replacement character for every character that has no width. For names that identify a peer, such
/// as a host: names that look alike are equal.
std::string withNothingHidden(std::string_view bytes);

} // namespace tw
