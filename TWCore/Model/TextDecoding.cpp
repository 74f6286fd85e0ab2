#include "TWCore/Model/TextDecoding.h"

#include "TWCore/Model/DisplayText.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace tw::TextDecoding {

namespace {

using namespace std::string_view_literals;

constexpr Marked marks[] = {
    {"UTF-8", "UTF-8", 3}, {"UTF-32", "UTF-32LE", 4}, {"UTF-16", "UTF-16LE", 2}, {"UTF-16", "UTF-16BE", 2}};
constexpr std::string_view bytesOfMarks[] = {"\xef\xbb\xbf"sv, "\xff\xfe\0\0"sv, "\xff\xfe"sv, "\xfe\xff"sv};

/// Of a file, for what is judged by its beginning.
constexpr std::size_t sampleBytes = 8192;

/// ICU's "cp949" is another table.
char const *converterOf(Encoding encoding)
{
    switch (encoding) {
    case Encoding::utf8:
        return "UTF-8";
    case Encoding::cp949:
        return "windows-949";
    case Encoding::sjis:
        return "ibm-943_P15A-2003";
    case Encoding::gbk:
        return "gb18030";
    default:
        return nameOf(encoding).data();
    }
}

/// ICU's own replacement for a single byte is a control character.
void writeReplacement(void const * /*context*/, UConverterToUnicodeArgs *arguments, char const * /*bytes*/,
                      std::int32_t /*length*/, UConverterCallbackReason reason, UErrorCode *status)
{
    constexpr char16_t replacement = 0xFFFD;
    if (reason > UCNV_IRREGULAR)
        return;
    *status = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(arguments, &replacement, 1, 0, status);
}

enum class BadBytes { refused, replaced };

/// Where the bytes end that are looked at.
enum class End { ofText, ofPiece };

struct Converted {
    std::string text;
    std::size_t pending = 0; ///< bytes at the end that are no whole character
};

/// Nothing for bytes that are refused.
std::optional<Converted> convert(std::string_view bytes, char const *converter, BadBytes bad, End end)
{
    auto status = U_ZERO_ERROR;
    std::unique_ptr<UConverter, decltype(&ucnv_close)> const opened(ucnv_open(converter, &status), &ucnv_close);
    ucnv_setToUCallBack(opened.get(), bad == BadBytes::refused ? UCNV_TO_U_CALLBACK_STOP : writeReplacement, nullptr,
                        nullptr, nullptr, &status);
    if (U_FAILURE(status))
        return std::nullopt;
    std::u16string units(bytes.size() + 1, u'\0'); // no encoding here has more units than bytes
    auto const *source = bytes.data();
    auto *target = units.data();
    ucnv_toUnicode(opened.get(), &target, units.data() + units.size(), &source, bytes.data() + bytes.size(), nullptr,
                   static_cast<UBool>(end == End::ofText), &status);
    if (U_FAILURE(status))
        return std::nullopt;
    Converted result;
    result.pending = static_cast<std::size_t>(ucnv_toUCountPending(opened.get(), &status));
    icu::UnicodeString(units.data(), static_cast<std::int32_t>(target - units.data())).toUTF8String(result.text);
    return result;
}

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

bool isLead(char byte)
{
    return static_cast<unsigned char>(byte) >= 0xC0;
}

/// Of the sequence that the byte begins; 0 if it begins none.
std::size_t lengthOfSequence(char lead)
{
    auto const byte = static_cast<unsigned char>(lead);
    if (byte < 0xC0 || byte >= 0xF8)
        return 0;
    return byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

bool isUtf8(std::string_view bytes)
{
    auto const *const data = reinterpret_cast<std::uint8_t const *>(bytes.data());
    for (std::size_t position = 0; position < bytes.size();) {
        UChar32 character = 0;
        U8_NEXT(data, position, bytes.size(), character); // NOLINT(bugprone-inc-dec-in-conditions): inside the macro
        if (character < 0)
            return false;
    }
    return true;
}

/// Without what may be a part of a character that goes on in the next piece.
std::string_view withoutTornTail(std::string_view bytes)
{
    constexpr int mostContinuations = 3;
    for (int count = 0; count < mostContinuations && !bytes.empty() && isContinuation(bytes.back()); ++count)
        bytes.remove_suffix(1);
    if (!bytes.empty() && isLead(bytes.back()))
        bytes.remove_suffix(1);
    return bytes;
}

/// How many bytes at the end are the beginning of a sequence that is not whole.
std::size_t tornUtf8(std::string_view bytes)
{
    constexpr std::size_t longestTorn = 3;
    for (std::size_t length = 1; length <= std::min(longestTorn, bytes.size()); ++length) {
        auto const byte = bytes[bytes.size() - length];
        if (!isContinuation(byte))
            return length < lengthOfSequence(byte) ? length : 0;
    }
    return 0;
}

std::optional<Encoding> encodingOfMark(std::string_view bytes)
{
    auto const marked = markOf(bytes);
    if (!marked || marked->converter == "UTF-8")
        return std::nullopt;
    return marked->converter == "UTF-32LE"   ? Encoding::utf32le
           : marked->converter == "UTF-16LE" ? Encoding::utf16le
                                             : Encoding::utf16be;
}

/// How many bytes are zero at each place of four.
std::array<std::size_t, 4> zerosByPlace(std::string_view bytes)
{
    std::array<std::size_t, 4> zeros{};
    for (std::size_t index = 0; index < bytes.size(); ++index)
        zeros[index % 4] += bytes[index] == '\0' ? 1 : 0;
    return zeros;
}

} // namespace

std::string_view nameOf(Encoding encoding)
{
    switch (encoding) {
    case Encoding::utf8:
        return "UTF-8";
    case Encoding::cp949:
        return "CP949";
    case Encoding::sjis:
        return "Shift_JIS";
    case Encoding::gbk:
        return "GBK";
    case Encoding::latin1:
        return "ISO-8859-1";
    case Encoding::utf16le:
        return "UTF-16LE";
    case Encoding::utf16be:
        return "UTF-16BE";
    case Encoding::utf32le:
        return "UTF-32LE";
    case Encoding::utf32be:
        break;
    }
    return "UTF-32BE";
}

std::size_t unitBytesOf(Encoding encoding)
{
    switch (encoding) {
    case Encoding::utf16le:
    case Encoding::utf16be:
        return 2;
    case Encoding::utf32le:
    case Encoding::utf32be:
        return 4;
    default:
        return 1;
    }
}

bool looksBinary(std::string_view bytes)
{
    constexpr std::size_t mostOf = 20; // more than one in twenty
    bytes = bytes.substr(0, sampleBytes);
    auto const isControl = [](char byte) { return (byte >= 0 && byte < 9) || (byte > 13 && byte < 32); };
    auto const controls = static_cast<std::size_t>(std::ranges::count_if(bytes, isControl));
    return bytes.contains('\0') || controls * mostOf > bytes.size();
}

std::optional<Encoding> detectWide(std::string_view beginning)
{
    auto const sample = beginning.substr(0, beginning.size() - beginning.size() % 4).substr(0, sampleBytes);
    auto const isText = [sample](Encoding encoding) {
        auto const converted = convert(sample, converterOf(encoding), BadBytes::refused, End::ofPiece);
        return converted && !converted->text.empty() && !looksBinary(converted->text);
    };
    auto const marked = encodingOfMark(beginning);
    if (marked && (sample.empty() || isText(*marked)))
        return marked;
    auto const zeros = zerosByPlace(sample);
    auto const all = sample.size() / 4;
    auto const few = all / 4; // of characters of another script
    auto const most = all - few;
    auto const has = [&](std::size_t first, std::size_t second, std::size_t least) {
        return zeros[first] >= least && zeros[second] >= least;
    };
    if (all == 0)
        return std::nullopt;
    for (auto const &[encoding, isLikely] :
         {std::pair(Encoding::utf32le, has(2, 3, all) && zeros[0] <= few),
          std::pair(Encoding::utf32be, has(0, 1, all) && zeros[3] <= few),
          std::pair(Encoding::utf16le, has(1, 3, most) && zeros[0] + zeros[2] <= few),
          std::pair(Encoding::utf16be, has(0, 2, most) && zeros[1] + zeros[3] <= few)}) {
        if (isLikely && isText(encoding))
            return encoding;
    }
    return std::nullopt;
}

Encoding detect(std::string_view bytes)
{
    // A tail that is all there is says nothing for UTF-8.
    auto const whole = withoutTornTail(bytes);
    if (isUtf8(bytes) || (!whole.empty() && isUtf8(whole)))
        return Encoding::utf8;
    for (auto const encoding : {Encoding::cp949, Encoding::sjis, Encoding::gbk}) {
        auto const converted = convert(bytes, converterOf(encoding), BadBytes::refused, End::ofPiece);
        if (converted && !converted->text.empty())
            return encoding;
    }
    return Encoding::latin1;
}

Decoded decodeStreaming(std::string_view bytes, Encoding encoding)
{
    if (encoding == Encoding::utf8) {
        auto const torn = tornUtf8(bytes);
        return {.text = repaired(bytes.substr(0, bytes.size() - torn)),
                .held = std::string(bytes.substr(bytes.size() - torn))};
    }
    auto converted = convert(bytes, converterOf(encoding), BadBytes::replaced, End::ofPiece).value_or(Converted());
    return {.text = std::move(converted.text), .held = std::string(bytes.substr(bytes.size() - converted.pending))};
}

std::string decode(std::string_view bytes, Encoding encoding)
{
    if (encoding == Encoding::utf8)
        return repaired(bytes);
    return convert(bytes, converterOf(encoding), BadBytes::replaced, End::ofText).value_or(Converted()).text;
}

std::optional<std::string> encode(std::string_view text, Encoding encoding)
{
    auto status = U_ZERO_ERROR;
    std::unique_ptr<UConverter, decltype(&ucnv_close)> const opened(ucnv_open(converterOf(encoding), &status),
                                                                    &ucnv_close);
    ucnv_setFromUCallBack(opened.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    auto const units =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    constexpr std::int32_t mostBytesOfUnit = 4;
    std::string bytes(static_cast<std::size_t>(units.length() * mostBytesOfUnit) + 1, '\0');
    auto const length = ucnv_fromUChars(opened.get(), bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                        units.getBuffer(), units.length(), &status);
    if (U_FAILURE(status))
        return std::nullopt;
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

std::optional<Marked> markOf(std::string_view bytes)
{
    // The mark of UTF-32 begins with that of UTF-16, and comes before it.
    auto const *const found =
        std::ranges::find_if(bytesOfMarks, [bytes](std::string_view mark) { return bytes.starts_with(mark); });
    return found == std::end(bytesOfMarks) ? std::nullopt : std::optional(marks[found - std::begin(bytesOfMarks)]);
}

std::string decodeMarked(std::string_view bytes, Marked const &marked)
{
    return convert(bytes.substr(marked.markBytes), marked.converter.data(), BadBytes::replaced, End::ofPiece)
        .value_or(Converted())
        .text;
}

std::string hexDump(std::string_view bytes, std::int64_t startOffset)
{
    constexpr std::size_t bytesInLine = 16;
    constexpr std::size_t lineLength = 80;
    std::string dump;
    dump.reserve((bytes.size() / bytesInLine + 1) * lineLength);
    for (std::size_t begin = 0; begin < bytes.size(); begin += bytesInLine) {
        auto const line = bytes.substr(begin, bytesInLine);
        std::array<char, 24> number;
        std::snprintf(number.data(), number.size(), "%08llX  ",
                      static_cast<unsigned long long>(startOffset) + static_cast<unsigned long long>(begin));
        dump += number.data();
        for (std::size_t position = 0; position < bytesInLine; ++position) {
            constexpr auto digits = "0123456789ABCDEF"sv;
            auto const byte = position < line.size() ? static_cast<unsigned char>(line[position]) : 0U;
            dump += position < line.size() ? std::string{digits[byte >> 4U], digits[byte & 15U], ' '} : "   ";
            if (position + 1 == bytesInLine / 2)
                dump += ' ';
        }
        dump += " |";
        for (auto const byte : line)
            dump += byte >= ' ' && byte <= '~' ? byte : '.';
        dump += "|\n";
    }
    return dump;
}

} // namespace tw::TextDecoding
