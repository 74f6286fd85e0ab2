#include "Tarnwick/Toolkit/Appearance/FieldText.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace tw::FieldText {

namespace {

constexpr char32_t escapeOfByteNul = 0xDC00;
constexpr char32_t firstEscape = escapeOfByteNul + 0x80; // a byte below 0x80 is valid everywhere
constexpr char32_t lastEscape = escapeOfByteNul + 0xFF;

constexpr char32_t replacementCharacter = 0xFFFD;

} // namespace

QString ofBytes(std::string_view bytes)
{
    // Not by QString::fromUtf8, which leaves out a byte order mark at the beginning.
    QString text;
    text.reserve(static_cast<qsizetype>(bytes.size()));
    auto const *const data = reinterpret_cast<std::uint8_t const *>(bytes.data());
    std::size_t position = 0;
    while (position < bytes.size()) {
        auto const start = position;
        UChar32 character = 0;
        U8_NEXT(data, position, bytes.size(), character); // NOLINT(bugprone-inc-dec-in-conditions): inside the macro
        if (character >= 0) {
            text += QChar::fromUcs4(static_cast<char32_t>(character));
            continue;
        }
        for (auto const *invalid = data + start; invalid != data + position; ++invalid)
            text += QChar(static_cast<char16_t>(escapeOfByteNul + *invalid));
    }
    return text;
}

std::string bytesOf(QStringView text)
{
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(text.size()));
    auto const *const data = text.utf16();
    qsizetype position = 0;
    while (position < text.size()) {
        char32_t character = 0;
        U16_NEXT(data, position, text.size(), character); // NOLINT(bugprone-inc-dec-in-conditions): inside the macro
        if (character >= firstEscape && character <= lastEscape) {
            bytes += static_cast<char>(character - escapeOfByteNul);
            continue;
        }
        if (U_IS_SURROGATE(character))
            character = replacementCharacter;
        std::uint8_t encoded[U8_MAX_LENGTH];
        std::int32_t length = 0;
        U8_APPEND_UNSAFE(encoded, length, character);
        bytes.append(reinterpret_cast<char const *>(encoded), static_cast<std::size_t>(length));
    }
    return bytes;
}

} // namespace tw::FieldText
