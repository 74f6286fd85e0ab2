#include "TWCore/Model/DisplayText.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <optional>

namespace tw {

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

void append(std::string &text, char32_t character)
{
    std::uint8_t encoded[U8_MAX_LENGTH];
    std::int32_t length = 0;
    U8_APPEND_UNSAFE(encoded, length, static_cast<UChar32>(character));
    text.append(reinterpret_cast<char const *>(encoded), static_cast<std::size_t>(length));
}

/// Copies the text, but for the characters that `sign` has an answer for. A sequence that is no character is -1.
template <class Sign>
std::string replaced(std::string_view bytes, Sign sign)
{
    std::string text;
    text.reserve(bytes.size());
    auto const *const data = reinterpret_cast<std::uint8_t const *>(bytes.data());
    std::size_t keptFrom = 0;
    std::size_t position = 0;
    while (position < bytes.size()) {
        auto const start = position;
        UChar32 character = 0;
        U8_NEXT(data, position, bytes.size(), character); // NOLINT(bugprone-inc-dec-in-conditions): inside the macro
        std::optional<char32_t> const shown = sign(character);
        if (!shown)
            continue;
        text.append(bytes, keptFrom, start - keptFrom);
        append(text, *shown);
        keptFrom = position;
    }
    text.append(bytes, keptFrom);
    return text;
}

std::optional<char32_t> signForIllFormed(UChar32 character)
{
    return character < 0 ? std::optional(replacementCharacter) : std::nullopt;
}

std::optional<char32_t> signForControl(UChar32 character)
{
    constexpr char32_t symbolForNul = 0x2400; // and the others up to 0x1F behind it
    constexpr char32_t symbolForDelete = 0x2421;
    constexpr char32_t symbolForNewLine = 0x2424;
    if (character >= 0 && character < 0x20)
        return symbolForNul + static_cast<char32_t>(character);
    if (character == 0x7F)
        return symbolForDelete;
    if (character == 0x85 || character == 0x2028 || character == 0x2029)
        return symbolForNewLine;
    if (character >= 0x80 && character < 0xA0)
        return replacementCharacter;
    return signForIllFormed(character);
}

/// Blocks of letters without anything hidden, so that the properties are looked up for few characters: Latin, Greek and
/// Cyrillic, and from the symbols over Chinese, Japanese and Korean to the private ones.
bool isInAPlainBlock(UChar32 character)
{
    constexpr UChar32 hangulFiller = 0x3164;
    return character < 0xAD || (character > 0xAD && character < 0x34F) || (character > 0x34F && character < 0x61C) ||
           (character >= 0x2070 && character < 0xFE00 && character != hangulFiller);
}

bool isHidden(UChar32 character)
{
    if (isInAPlainBlock(character))
        return false;
    return u_hasBinaryProperty(character, UCHAR_DEFAULT_IGNORABLE_CODE_POINT) != 0 ||
           u_hasBinaryProperty(character, UCHAR_BIDI_CONTROL) != 0;
}

/// Persian and Indic words, emoji and flags are written with these.
bool shapesItsNeighbours(UChar32 character)
{
    constexpr UChar32 zeroWidthNonJoiner = 0x200C;
    constexpr UChar32 zeroWidthJoiner = 0x200D;
    bool const isTag = character >= 0xE0020 && character <= 0xE007F;
    return character == zeroWidthNonJoiner || character == zeroWidthJoiner || isTag ||
           u_hasBinaryProperty(character, UCHAR_VARIATION_SELECTOR) != 0;
}

std::optional<char32_t> signOnOneLine(UChar32 character)
{
    if (isHidden(character) && !shapesItsNeighbours(character))
        return replacementCharacter;
    return signForControl(character);
}

std::optional<char32_t> signForHidden(UChar32 character)
{
    return isHidden(character) ? replacementCharacter : signForControl(character);
}

/// Nearly every name is, and a row is painted often.
bool isPrintableAscii(std::string_view bytes)
{
    // Without a branch for each byte, so that the compiler looks at many of them at once.
    unsigned char others = 0;
    for (auto const byte : bytes)
        others |= static_cast<unsigned char>(static_cast<unsigned char>(byte - ' ') > '~' - ' ');
    return others == 0;
}

} // namespace

std::string repaired(std::string_view bytes)
{
    return replaced(bytes, signForIllFormed);
}

std::string onOneLine(std::string_view bytes)
{
    return isPrintableAscii(bytes) ? std::string(bytes) : replaced(bytes, signOnOneLine);
}

std::string withNothingHidden(std::string_view bytes)
{
    return replaced(bytes, signForHidden);
}

} // namespace tw
