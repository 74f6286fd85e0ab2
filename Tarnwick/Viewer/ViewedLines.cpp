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

/// Where a line that is cut near a multiple of the cut goes on: with a whole character.
std::int64_t ViewedLines::cutNear(std::int64_t offset) const
{
    auto const bytes = window.copy(offset, offset + mostToCharacter);
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
    auto const newline = window.findLast('\n', multiple - 2 * cutBytes, offset);
    auto start = newline ? *newline + 1 : window.begin();
    // Of two places for a cut, the later one counts if it is not behind the offset.
    for (auto const each : {multiple, multiple - cutBytes}) {
        auto const cut = cutNear(each);
        if (each <= window.begin() || cut > offset)
            continue;
        if (!window.find('\n', each - cutBytes, cut))
            start = std::max(start, cut);
        break;
    }
    return start;
}

std::int64_t ViewedLines::endOf(std::int64_t start) const
{
    if (mode == ViewerMode::hex)
        return std::min(start - start % hexBytes + hexBytes, window.end());
    auto const newline = window.find('\n', start, start + 3 * cutBytes);
    auto const end = newline ? *newline + 1 : window.end();
    for (auto each = start - start % cutBytes + cutBytes; each < end; each += cutBytes) {
        auto const cut = cutNear(each);
        if (cut > start && cut < end && !window.find('\n', each - cutBytes, cut))
            return cut;
    }
    return end;
}

std::u32string ViewedLines::shown(std::string bytes) const
{
    return charactersOf(withSigns(TextDecoding::decode(bytes, encoding)));
}

std::u32string ViewedLines::text(std::int64_t start) const
{
    auto bytes = window.copy(start, endOf(start));
    if (mode == ViewerMode::hex) {
        auto dump = TextDecoding::hexDump(bytes, start);
        dump.resize(dump.empty() ? 0 : dump.size() - 1);
        return {dump.begin(), dump.end()};
    }
    if (bytes.ends_with('\n'))
        bytes.pop_back();
    if (bytes.ends_with('\r'))
        bytes.pop_back();
    return shown(std::move(bytes));
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
    auto const end = endOf(start);
    return mode == ViewerMode::hex || window.copy(end - 1, end) == "\n";
}

} // namespace tw
