#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Bytes of a file as text: whether they are text, in which encoding, and what they say.
///
/// A file is read in pieces, and a piece may end in the middle of a character. No operation fails: every input has an
/// answer, and what is no character in an encoding is a replacement character (U+FFFD).
namespace tw::TextDecoding {

enum class Encoding {
    utf8,
    cp949,
    sjis,
    gbk,
    latin1, ///< has a character for each byte, so it comes last of those that are tried
    utf16le,
    utf16be,
    utf32le,
    utf32be,
};

/// In the order in which they are offered.
inline constexpr std::array encodings{Encoding::utf8,    Encoding::cp949,   Encoding::sjis,
                                      Encoding::gbk,     Encoding::latin1,  Encoding::utf16le,
                                      Encoding::utf16be, Encoding::utf32le, Encoding::utf32be};

/// As people call it: "UTF-8", "Shift_JIS".
std::string_view nameOf(Encoding encoding);

/// By the share of control characters in the first 8 KiB. A NUL is enough.
bool looksBinary(std::string_view bytes);

/// The bytes of a code unit: 2 in UTF-16, 4 in UTF-32, and 1 in all others, where a line end is one byte too.
std::size_t unitBytesOf(Encoding encoding);

/// UTF-16 or UTF-32, if the beginning of a file is text in one of them: with its mark, or by the zeros between ASCII
/// characters.
std::optional<Encoding> detectWide(std::string_view beginning);

/// The first encoding, UTF-16 and UTF-32 apart, in which the bytes make sense. They may end in the middle of a
/// character.
Encoding detect(std::string_view bytes);

struct Decoded {
    std::string text; ///< UTF-8
    std::string held; ///< the beginning of a character, which belongs before the next piece
};

/// One piece of a text that begins with a character. However a text is divided into pieces, its text is the same.
Decoded decodeStreaming(std::string_view bytes, Encoding encoding);

/// The last piece of a text, or a whole one. UTF-8.
std::string decode(std::string_view bytes, Encoding encoding);

/// The bytes of a text in an encoding; nothing if it has a character that the encoding does not have.
std::optional<std::string> encode(std::string_view text, Encoding encoding);

/// A text that says itself what it is, by the byte order mark that it begins with.
struct Marked {
    std::string_view name;      ///< of its encoding
    std::string_view converter; ///< the same as ICU calls it
    std::size_t markBytes;
};

std::optional<Marked> markOf(std::string_view bytes);

/// The beginning of such a text, without its mark. UTF-8; a character that is cut off at the end is left out.
std::string decodeMarked(std::string_view bytes, Marked const &marked);

/// A line for 16 bytes each: their offset, their digits, and what is ASCII of them.
std::string hexDump(std::string_view bytes, std::int64_t startOffset);

} // namespace tw::TextDecoding
