#include "Tarnwick/Table/FoldedName.h"

#include "TWCore/Check.h"
#include "TWCore/Model/DisplayText.h"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <utility>

namespace tw {

namespace {

/// The letters of two bytes in UTF-8.
constexpr char32_t firstOfTwo = 0x80;
constexpr char32_t afterTwo = 0x800;

using FoldedPairs = std::array<char16_t, afterTwo>;

/// Letters of three bytes that are their own folded form and never merge with the letter before.
constexpr std::array<std::pair<char32_t, char32_t>, 6> unchanging{{
    {0x2010, 0x2027}, // dashes, quotes, the ellipsis
    {0x3041, 0x3096}, // hiragana
    {0x30A1, 0x30FA}, // katakana
    {0x3400, 0x4DBF}, // ideographs
    {0x4E00, 0x9FFF},
    {0xAC00, 0xD7A3} // Hangul syllables
}};

bool isAscii(std::string_view bytes)
{
    unsigned char all = 0;
    for (auto const byte : bytes)
        all |= static_cast<unsigned char>(byte);
    return all < 0x80;
}

char foldedAscii(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

icu::Normalizer2 const &composer()
{
    auto status = U_ZERO_ERROR;
    auto const *const instance = icu::Normalizer2::getNFCInstance(status);
    check(U_SUCCESS(status) != 0, "ICU came without its data for letters");
    return *instance;
}

/// For each letter of two bytes its folded form, if that has two bytes too and merges with no letter before it; else 0.
FoldedPairs makeFoldedPairs()
{
    FoldedPairs pairs{};
    for (auto letter = firstOfTwo; letter < afterTwo; ++letter) {
        icu::UnicodeString folded(static_cast<UChar32>(letter));
        folded.foldCase();
        auto status = U_ZERO_ERROR;
        auto const is = folded.char32At(0);
        auto const staysAlone = folded.countChar32() == 1 && composer().hasBoundaryBefore(is) != 0 &&
                                composer().isNormalized(folded, status) != 0;
        if (staysAlone && is >= static_cast<UChar32>(firstOfTwo) && is < static_cast<UChar32>(afterTwo))
            pairs[letter] = static_cast<char16_t>(is);
    }
    return pairs;
}

FoldedPairs const &foldedPairs()
{
    static auto const pairs = makeFoldedPairs();
    return pairs;
}

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

char32_t bitsOf(char byte, unsigned mask)
{
    return static_cast<unsigned char>(byte) & mask;
}

bool isUnchanging(char32_t letter)
{
    return std::ranges::any_of(unchanging,
                               [&](auto const &range) { return letter >= range.first && letter <= range.second; });
}

/// Folds the letters of two and three bytes at `at` where they are. Returns their number of bytes, or 0 if it cannot.
std::size_t foldLetter(char *at, std::size_t left, FoldedPairs const &pairs)
{
    auto const lead = static_cast<unsigned char>(*at);
    if (lead >= 0xC2 && lead < 0xE0 && left >= 2 && isContinuation(at[1])) {
        auto const folded = pairs[bitsOf(at[0], 0x1F) << 6U | bitsOf(at[1], 0x3F)];
        at[0] = static_cast<char>(0xC0U | folded >> 6U);
        at[1] = static_cast<char>(0x80U | (folded & 0x3FU));
        return folded != 0 ? 2 : 0;
    }
    if (lead >= 0xE0 && lead < 0xF0 && left >= 3 && isContinuation(at[1]) && isContinuation(at[2]) &&
        isUnchanging(bitsOf(at[0], 0x0F) << 12U | bitsOf(at[1], 0x3F) << 6U | bitsOf(at[2], 0x3F)))
        return 3;
    return 0;
}

/// False if there is another letter among them; the bytes are spoilt then.
bool foldUsualLetters(std::span<char> name)
{
    auto const &pairs = foldedPairs();
    for (std::size_t at = 0; at < name.size();) {
        if (static_cast<unsigned char>(name[at]) < firstOfTwo) {
            ++at;
            continue;
        }
        auto const bytes = foldLetter(&name[at], name.size() - at, pairs);
        if (bytes == 0)
            return false;
        at += bytes;
    }
    return true;
}

void appendFoldedByICU(std::string &text, std::string_view name)
{
    auto status = U_ZERO_ERROR;
    auto const readable = repaired(name);
    std::string folded;
    icu::StringByteSink<std::string> intoFolded(&folded);
    icu::CaseMap::utf8Fold(0, readable, intoFolded, nullptr, status);
    icu::StringByteSink<std::string> intoText(&text);
    composer().normalizeUTF8(0, folded, intoText, nullptr, status);
    check(U_SUCCESS(status) != 0, "ICU cannot fold a name");
}

} // namespace

void appendFolded(std::string &text, std::string_view name)
{
    auto const start = text.size();
    text.append(name);
    if (!isAscii(name) && !foldUsualLetters(std::span(text).subspan(start))) {
        text.resize(start);
        appendFoldedByICU(text, name);
    }
    auto const appended = std::span(text).subspan(start);
    std::ranges::transform(appended, appended.begin(), foldedAscii);
    std::ranges::replace(appended, '\0', zeroByteInName);
}

} // namespace tw
