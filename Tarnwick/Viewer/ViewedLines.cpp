#include "Tarnwick/Viewer/ViewedLines.h"

#include "TWCore/Model/DisplayText.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <string_view>

namespace tw {

namespace {

/// Bytes up to here are a character of their own in every encoding, wherever they stand.
constexpr unsigned char lastLoneByte = 0x2F;

/// How far behind a multiple of the cut a line is cut, at most. A text without a sign or a blank is rarely longer.
constexpr std::int64_t mostToCharacter = 512;

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// The high byte of the second half of a character of UTF-16.
bool isLaterSurrogate(unsigned char high)
{
    return high >= 0xDC && high <= 0xDF;
}

std::u32string charactersOf(std::string const &text)
{
    std::u32string characters;
    characters.reserve(text.size());
    auto const *const data = reinterpret_cast<std::uint8_t const *>(text.data());
    for (std::size_t position = 0; position < text.size();) {
        UChar32 character = 0;
        U8_NEXT_OR_FFFD(data, position, text.size(), character); // NOLINT(bugprone-inc-dec-in-conditions): the macro's
        characters += static_cast<char32_t>(character);
    }
    return characters;
}

/// Every control character but the tab has a sign.
std::string withSigns(std::string_view text)
{
    std::string result;
    for (;;) {
        auto const tab = std::min(text.find('\t'), text.size());
        result += onOneLine(text.substr(0, tab));
        if (tab == text.size())
            return result;
        result += '\t';
        text.remove_prefix(tab + 1);
    }
}

} // namespace

/// Behind the line end that has its 0x0A at `byte`. In UTF-16 and UTF-32 that byte is also a part of other characters.
std::optional<std::int64_t> ViewedLines::behindLineEndAt(std::int64_t byte) const
{
    using enum TextDecoding::Encoding;
    auto const unit = static_cast<std::int64_t>(TextDecoding::unitBytesOf(encoding));
    if (unit == 1)
        return byte + 1;
    auto const isLittle = encoding == utf16le || encoding == utf32le;
    auto const begin = byte - byte % unit;
    std::string end(static_cast<std::size_t>(unit), '\0');
    (isLittle ? end.front() : end.back()) = '\n';
    return window.copy(begin, begin + unit) == end ? std::optional(begin + unit) : std::nullopt;
}

std::optional<std::int64_t> ViewedLines::behindLineEnd(std::int64_t from, std::int64_t to) const
{
    while (auto const byte = window.find('\n', from, to)) {
        auto const behind = behindLineEndAt(*byte);
        if (behind)
            return *behind <= to ? behind : std::nullopt;
        from = *byte + 1;
    }
    return std::nullopt;
}

std::optional<std::int64_t> ViewedLines::behindLastLineEnd(std::int64_t from, std::int64_t to) const
{
    for (auto before = to;;) {
        auto const byte = window.findLast('\n', from, before);
        if (!byte)
            return std::nullopt;
        auto const behind = behindLineEndAt(*byte);
        if (behind && *behind <= to)
            return behind;
        before = *byte;
    }
}

/// Where a line that is cut near a multiple of the cut goes on: with a whole character.
std::int64_t ViewedLines::cutNear(std::int64_t offset) const
{
    auto const unit = static_cast<std::int64_t>(TextDecoding::unitBytesOf(encoding));
    auto const bytes = window.copy(offset, offset + (unit == 1 ? mostToCharacter : unit));
    if (unit == 2 && bytes.size() == 2) {
        auto const high = static_cast<unsigned char>(bytes[encoding == TextDecoding::Encoding::utf16le ? 1 : 0]);
        return isLaterSurrogate(high) ? offset + unit : offset;
    }
    if (unit != 1)
        return offset;
    auto const isStart = [&](char byte) { return !isContinuation(byte); };
    auto const isLone = [](char byte) { return static_cast<unsigned char>(byte) <= lastLoneByte; };
    if (encoding == TextDecoding::Encoding::utf8) {
        auto const found = std::ranges::find_if(bytes, isStart);
        return found == bytes.end() ? offset : offset + (found - bytes.begin());
    }
    auto const found = std::ranges::find_if(bytes, isLone);
    return found == bytes.end() ? offset : offset + (found - bytes.begin());
}

std::int64_t ViewedLines::startOf(std::int64_t offset) const
{
    offset = std::clamp(offset, window.begin(), window.end());
    if (mode == ViewerMode::hex)
        return std::max(offset - offset % hexBytes, window.begin());
    auto const multiple = offset - offset % cutBytes;
    auto start = behindLastLineEnd(multiple - 2 * cutBytes, offset).value_or(window.begin());
    // Of two places for a cut, the later one counts if it is not behind the offset.
    for (auto const each : {multiple, multiple - cutBytes}) {
        auto const cut = cutNear(each);
        if (each <= window.begin() || cut > offset)
            continue;
        if (!behindLineEnd(each - cutBytes, cut))
            start = std::max(start, cut);
        break;
    }
    return start;
}

std::int64_t ViewedLines::endOf(std::int64_t start) const
{
    if (mode == ViewerMode::hex)
        return std::min(start - start % hexBytes + hexBytes, window.end());
    auto const end = behindLineEnd(start, start + 3 * cutBytes).value_or(window.end());
    for (auto each = start - start % cutBytes + cutBytes; each < end; each += cutBytes) {
        auto const cut = cutNear(each);
        if (cut > start && cut < end && !behindLineEnd(each - cutBytes, cut))
            return cut;
    }
    return end;
}

/// The bytes from the beginning of a line on, without its end and without the mark of a file's beginning.
std::u32string ViewedLines::shown(std::string_view bytes) const
{
    constexpr std::string_view mark = "\xef\xbb\xbf";
    auto const decoded = TextDecoding::decode(bytes, encoding);
    std::string_view text = decoded;
    if (text.ends_with('\n'))
        text.remove_suffix(1);
    if (text.ends_with('\r'))
        text.remove_suffix(1);
    if (text.starts_with(mark))
        text.remove_prefix(mark.size());
    return charactersOf(withSigns(text));
}

std::u32string ViewedLines::text(std::int64_t start) const
{
    auto const bytes = window.copy(start, endOf(start));
    if (mode == ViewerMode::text)
        return shown(bytes);
    auto dump = TextDecoding::hexDump(bytes, start);
    dump.resize(dump.empty() ? 0 : dump.size() - 1);
    return {dump.begin(), dump.end()};
}

std::size_t ViewedLines::charactersBefore(std::int64_t start, std::int64_t offset) const
{
    // Where the digits of a byte are in its line: behind the offset, with a gap in the middle.
    constexpr std::int64_t behindOffset = 10;
    constexpr std::int64_t perByte = 3;
    auto const byte = std::min(offset, endOf(start)) - start;
    if (mode == ViewerMode::hex)
        return static_cast<std::size_t>(behindOffset + perByte * byte + (byte >= hexBytes / 2 ? 1 : 0));
    return shown(window.copy(start, std::min(offset, endOf(start)))).size();
}

bool ViewedLines::endsWithLineEnd(std::int64_t start) const
{
    return mode == ViewerMode::hex || behindLineEnd(start, endOf(start)).has_value();
}

} // namespace tw
