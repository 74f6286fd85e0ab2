#include "Tarnwick/Viewer/SearchWish.h"

#include "TWCore/Shell/ByteExpression.h"
#include "Tarnwick/Viewer/ViewerWords.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>
#include <vector>

namespace tw {

namespace {

using FileSearch::Sought;
using TextDecoding::Encoding;
using SoughtOrWords = std::expected<Sought, Text>;

constexpr UChar32 firstBehindAscii = 0x80;

/// "48 65 6c" or "48656C".
std::optional<std::string> bytesOfDigits(std::string_view typed)
{
    std::string bytes;
    while (!typed.empty()) {
        if (typed.front() == ' ') {
            typed.remove_prefix(1);
            continue;
        }
        unsigned value = 0;
        auto const pair = typed.substr(0, 2);
        auto const [stop, error] = std::from_chars(pair.data(), pair.data() + pair.size(), value, 16);
        if (pair.size() != 2 || error != std::errc() || stop != pair.data() + pair.size())
            return std::nullopt;
        bytes += static_cast<char>(value);
        typed.remove_prefix(2);
    }
    return bytes;
}

std::vector<UChar32> charactersOf(std::string_view typed)
{
    std::vector<UChar32> characters;
    auto const *const data = reinterpret_cast<std::uint8_t const *>(typed.data());
    for (std::size_t position = 0; position < typed.size();) {
        UChar32 character = 0;
        U8_NEXT_OR_FFFD(data, position, typed.size(), character); // NOLINT(bugprone-inc-dec-in-conditions): the macro's
        characters.push_back(character);
    }
    return characters;
}

std::optional<std::string> bytesOf(UChar32 character, Encoding encoding)
{
    std::string text(U8_MAX_LENGTH, '\0');
    std::size_t length = 0;
    U8_APPEND_UNSAFE(text.data(), length, character); // NOLINT(bugprone-inc-dec-in-conditions): inside the macro
    return TextDecoding::encode(std::string_view(text).substr(0, length), encoding);
}

/// Bytes as they are, whatever they would mean in an expression.
std::string quoted(std::string_view bytes)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string pattern;
    for (auto const each : bytes) {
        auto const byte = static_cast<unsigned char>(each);
        pattern += {'\\', 'x', digits[byte >> 4U], digits[byte & 15U]};
    }
    return pattern;
}

enum class Case { counts, ignored };

/// A character in every form that it may have. Nothing if the encoding has none of them.
std::optional<std::string> patternOf(UChar32 character, Encoding encoding, Case letters)
{
    std::vector<UChar32> forms{character};
    if (letters == Case::ignored) {
        auto const upper = u_toupper(character);
        for (auto const form : {upper, u_tolower(character), u_tolower(upper)}) {
            if (std::ranges::find(forms, form) == forms.end())
                forms.push_back(form);
        }
    }
    std::string pattern;
    for (auto const form : forms) {
        if (auto const bytes = bytesOf(form, encoding))
            pattern += (pattern.empty() ? "(?-i:" : "|") + quoted(*bytes);
    }
    return pattern.empty() ? std::nullopt : std::optional(pattern + ')');
}

SoughtOrWords textIgnoringCase(SearchWish const &wish, Encoding encoding)
{
    std::string pattern;
    for (auto const character : charactersOf(wish.typed)) {
        auto const part = patternOf(character, encoding, Case::ignored);
        if (!part)
            return std::unexpected(ViewerWords::cannotBeSought(encoding));
        pattern += *part;
    }
    return Sought{.pattern = std::move(pattern), .kind = Sought::Kind::expression};
}

/// The bytes of a character that is not ASCII belong together; in a set they would be characters of their own.
SoughtOrWords expression(SearchWish const &wish, Encoding encoding)
{
    if (TextDecoding::unitBytesOf(encoding) > 1)
        return std::unexpected(ViewerWords::noExpressionsIn(encoding));
    auto const letters = wish.ignoresCase ? Case::ignored : Case::counts;
    std::string pattern = wish.ignoresCase ? "(?i)" : "";
    bool isInSet = false;
    bool isEscaped = false;
    for (auto const character : charactersOf(wish.typed)) {
        if (character < firstBehindAscii) {
            pattern += static_cast<char>(character);
            isInSet = isEscaped ? isInSet : character == '[' || (isInSet && character != ']');
            isEscaped = !isEscaped && character == '\\';
            continue;
        }
        auto const part = patternOf(character, encoding, letters);
        if (!part)
            return std::unexpected(ViewerWords::cannotBeSought(encoding));
        if (isInSet)
            return std::unexpected(ViewerWords::onlyAsciiInSets());
        if (std::exchange(isEscaped, false))
            pattern.pop_back();
        pattern += *part;
    }
    if (!ByteExpression::isValid(pattern))
        return std::unexpected(ViewerWords::noExpression());
    return Sought{.pattern = std::move(pattern), .kind = Sought::Kind::expression};
}

} // namespace

SoughtOrWords SearchWish::in(ViewerMode mode, Encoding encoding) const
{
    if (typed.empty() || typed.size() > mostBytes)
        return std::unexpected(ViewerWords::cannotBeSought(encoding));
    if (isExpression)
        return expression(*this, encoding);
    std::optional<std::string> bytes;
    if (mode == ViewerMode::hex)
        bytes = bytesOfDigits(typed);
    if (!bytes && ignoresCase)
        return textIgnoringCase(*this, encoding);
    if (!bytes)
        bytes = TextDecoding::encode(typed, encoding);
    if (!bytes || bytes->empty())
        return std::unexpected(ViewerWords::cannotBeSought(encoding));
    return Sought{.pattern = *std::move(bytes)};
}

} // namespace tw
