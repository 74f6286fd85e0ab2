#include "Tarnwick/Preview/PreviewText.h"

#include "TWCore/Model/DisplayText.h"

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace tw {

namespace {

using namespace std::string_view_literals;

struct Guess {
    char const *title;
    char const *converter; ///< of ICU's
};

/// Each refuses bytes that it has no character for, and the last one has a character for each byte.
constexpr Guess guesses[] = {{"UTF-8", "UTF-8"},
                             {"CP949", "windows-949"},
                             {"Shift_JIS", "ibm-943_P15A-2003"},
                             {"GBK", "gb18030"},
                             {"ISO-8859-1", "ISO-8859-1"}};

struct Mark {
    std::string_view bytes;
    Guess guess;
};

constexpr Mark marks[] = {{"\xef\xbb\xbf"sv, {"UTF-8", "UTF-8"}},
                          {"\xff\xfe\0\0"sv, {"UTF-32", "UTF-32LE"}},
                          {"\xff\xfe"sv, {"UTF-16", "UTF-16LE"}},
                          {"\xfe\xff"sv, {"UTF-16", "UTF-16BE"}}};

Mark const *markOf(std::string_view bytes)
{
    auto const *const found =
        std::ranges::find_if(marks, [&](Mark const &mark) { return bytes.starts_with(mark.bytes); });
    return found == std::end(marks) ? nullptr : found;
}

enum class BadBytes { refused, replaced };

/// Nothing if the bytes are not in this encoding. A character that is cut off at the end is left out.
std::optional<std::string> decoded(std::string_view bytes, char const *converter, BadBytes bad)
{
    auto status = U_ZERO_ERROR;
    std::unique_ptr<UConverter, decltype(&ucnv_close)> const opened(ucnv_open(converter, &status), &ucnv_close);
    if (bad == BadBytes::refused)
        ucnv_setToUCallBack(opened.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    if (U_FAILURE(status))
        return std::nullopt;
    std::u16string text(bytes.size() + 1, u'\0'); // no encoding here has more units than bytes
    auto const *source = bytes.data();
    auto *target = text.data();
    ucnv_toUnicode(opened.get(), &target, text.data() + text.size(), &source, bytes.data() + bytes.size(), nullptr,
                   /*flush:*/ false, &status);
    if (U_FAILURE(status))
        return std::nullopt;
    text.resize(static_cast<std::size_t>(target - text.data()));
    std::string result;
    icu::UnicodeString(text.data(), static_cast<std::int32_t>(text.size())).toUTF8String(result);
    return result;
}

/// Where a line of UTF-8 is cut, so that no character is.
std::size_t cutOf(std::string_view line)
{
    auto end = std::min(line.size(), PreviewText::mostLineBytes);
    while (end > 0 && end < line.size() && (static_cast<unsigned char>(line[end]) & 0xc0) == 0x80)
        --end;
    return end;
}

std::string withShortLines(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        auto const end = std::min(text.find('\n'), text.size());
        auto const line = text.substr(0, end);
        auto const cut = cutOf(line);
        result += line.substr(0, cut);
        if (cut < line.size())
            result += "…";
        if (end < text.size())
            result += '\n';
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

} // namespace

bool PreviewText::looksBinary(std::string_view bytes)
{
    constexpr std::size_t sample = 8192;
    constexpr std::size_t mostOf = 20; // one in twenty
    if (markOf(bytes))
        return false;
    bytes = bytes.substr(0, sample);
    auto const isControl = [](char byte) { return (byte >= 0 && byte < 9) || (byte > 13 && byte < 32); };
    auto const controls = static_cast<std::size_t>(std::ranges::count_if(bytes, isControl));
    return bytes.contains('\0') || controls * mostOf > bytes.size();
}

PreviewText PreviewText::of(std::string_view bytes)
{
    if (auto const *const mark = markOf(bytes)) {
        auto const behind = bytes.substr(mark->bytes.size());
        auto text = decoded(behind, mark->guess.converter, BadBytes::replaced);
        return {.text = withShortLines(text.value_or(std::string())), .encoding = mark->guess.title};
    }
    for (auto const &guess : guesses) {
        if (auto const text = decoded(bytes, guess.converter, BadBytes::refused))
            return {.text = withShortLines(*text), .encoding = guess.title};
    }
    return {.text = withShortLines(repaired(bytes)), .encoding = "UTF-8"};
}

} // namespace tw
