#include "Tarnwick/Table/FoldedName.h"

#include "TWCore/Check.h"
#include "TWCore/Model/DisplayText.h"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>

namespace tw {

namespace {

/// The letters of two bytes in UTF-8.
constexpr char32_t firstOfTwo = 0x80;
constexpr char32_t afterTwo = 0x800;

/// No one types it.
constexpr char zeroByteInName = '\1';

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

using Word = std::uint64_t;

Word wordAt(char const *bytes)
{
    Word word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

constexpr Word highBits = 0x8080'8080'8080'8080U;
constexpr Word lowBits = 0x0101'0101'0101'0101U;

/// Its lowest bit is in the first byte that is beyond ASCII or zero. No bit if there is no such byte.
Word unusualIn(Word word)
{
    return (word | (word - lowBits)) & highBits;
}

/// Copies `name`. True if it has ASCII characters only, and no zero byte.
bool copyPlain(std::string_view name, char *to)
{
    if (name.size() < sizeof(Word)) {
        std::ranges::copy(name, to);
        return std::ranges::all_of(name, [](char byte) { return static_cast<signed char>(byte) > 0; });
    }
    Word unusual = 0;
    auto const copyWord = [&](std::size_t at) {
        auto const word = wordAt(&name[at]);
        unusual |= unusualIn(word);
        std::memcpy(to + at, &word, sizeof word);
    };
    auto const last = name.size() - sizeof(Word); // overlaps the word before
    for (std::size_t at = 0; at < last; at += sizeof(Word))
        copyWord(at);
    copyWord(last);
    return unusual == 0;
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

/// The place of the first byte, from `at` on, beyond ASCII or zero; the end if there is none.
std::size_t nextUnusual(std::span<char const> name, std::size_t at)
{
    for (; at + sizeof(Word) <= name.size(); at += sizeof(Word)) {
        if (auto const unusual = unusualIn(wordAt(&name[at])))
            return at + static_cast<std::size_t>(std::countr_zero(unusual)) / 8;
    }
    while (at < name.size() && static_cast<signed char>(name[at]) > 0)
        ++at;
    return at;
}

/// False if there is another letter among them, or a zero byte; the bytes are spoilt then.
bool foldUsualLetters(std::span<char> name)
{
    auto const &pairs = foldedPairs();
    for (auto at = nextUnusual(name, 0); at < name.size(); at = nextUnusual(name, at)) {
        auto const bytes = foldLetter(&name[at], name.size() - at, pairs);
        if (bytes == 0)
            return false;
        at += bytes;
    }
    return true;
}

std::string foldedByICU(std::string_view name)
{
    auto status = U_ZERO_ERROR;
    auto const readable = repaired(name);
    std::string folded;
    icu::StringByteSink<std::string> intoFolded(&folded);
    icu::CaseMap::utf8Fold(0, readable, intoFolded, nullptr, status);
    std::string composed;
    icu::StringByteSink<std::string> intoComposed(&composed);
    composer().normalizeUTF8(0, folded, intoComposed, nullptr, status);
    check(U_SUCCESS(status) != 0, "ICU cannot fold a name");
    std::ranges::replace(composed, '\0', zeroByteInName);
    return composed;
}

} // namespace

namespace FoldedName {

std::string of(std::string_view name)
{
    std::string text(name.size(), '\0');
    if (!copyUsual(name, text.data()))
        text = foldedByICU(name);
    foldAscii(text);
    return text;
}

bool copyUsual(std::string_view name, char *to)
{
    return copyPlain(name, to) || foldUsualLetters({to, name.size()});
}

void foldAscii(std::string &text)
{
    std::ranges::transform(text, text.begin(), foldedAscii);
}

} // namespace FoldedName

} // namespace tw
