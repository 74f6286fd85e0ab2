#include "Tarnwick/Format/Fmt.h"

#include "TWCore/Check.h"

#include <unicode/brkiter.h>
#include <unicode/bytestream.h>
#include <unicode/casemap.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <ctime>
#include <unordered_map>

namespace tw::Fmt {

namespace {

constexpr std::array<char, 6> units{'B', 'K', 'M', 'G', 'T', 'P'};

/// More than a screen can show many times over; beyond it the cache starts anew.
constexpr std::size_t cachedDates = 4096;

constexpr std::size_t longestExtension = 12; ///< characters

/// "2024-02-29 23:59"; empty for a time that no calendar of the machine reaches.
std::string formatted(std::int64_t seconds)
{
    std::time_t const time = seconds;
    std::tm parts{};
    if (localtime_r(&time, &parts) == nullptr)
        return {};
    auto const twoDigits = [](std::string &text, int number) {
        text += static_cast<char>('0' + number / 10);
        text += static_cast<char>('0' + number % 10);
    };
    auto text = std::to_string(std::int64_t{parts.tm_year} + 1900);
    if (text.size() < 4)
        text.insert(0, 4 - text.size(), '0');
    text += '-';
    twoDigits(text, parts.tm_mon + 1);
    text += '-';
    twoDigits(text, parts.tm_mday);
    text += ' ';
    twoDigits(text, parts.tm_hour);
    text += ':';
    twoDigits(text, parts.tm_min);
    return text;
}

/// The minute that a time lies in, also before 1970, where a plain division would round the other way.
std::int64_t minuteOf(std::int64_t seconds)
{
    auto const quotient = seconds / 60;
    return seconds % 60 < 0 ? quotient - 1 : quotient;
}

bool isAscii(std::string_view bytes)
{
    return std::ranges::all_of(bytes, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

/// Whether these are at most `limit` characters as a person counts them: a letter and its accents are one.
bool hasAtMost(std::size_t limit, std::string_view text)
{
    if (text.size() <= limit)
        return true;
    if (isAscii(text))
        return false;
    auto status = U_ZERO_ERROR;
    static std::unique_ptr<icu::BreakIterator> const characters(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    check(characters != nullptr, "ICU came without its character rules");
    UText source = UTEXT_INITIALIZER;
    utext_openUTF8(&source, text.data(), static_cast<std::int64_t>(text.size()), &status);
    characters->setText(&source, status);
    check(U_SUCCESS(status) != 0, "ICU cannot count the characters of a name");
    std::size_t count = 0;
    while (count <= limit && characters->next() != icu::BreakIterator::DONE)
        ++count;
    utext_close(&source);
    return count <= limit;
}

std::string lowerCase(std::string_view text)
{
    std::string lower;
    auto status = U_ZERO_ERROR;
    icu::StringByteSink<std::string> sink(&lower, static_cast<std::int32_t>(text.size()));
    icu::CaseMap::utf8ToLower("", 0, text, sink, nullptr, status);
    check(U_SUCCESS(status) != 0, "ICU cannot lower the case of a name");
    return lower;
}

} // namespace

std::string size(std::int64_t bytes, EntryKind kind)
{
    if (kind == EntryKind::directory)
        return "<DIR>";
    if (kind == EntryKind::symlink)
        return "<LNK>";
    if (bytes < 1024)
        return std::to_string(bytes);
    auto amount = static_cast<double>(bytes) / 1024;
    std::size_t unit = 1;
    for (; amount >= 1024 && unit < units.size() - 1; ++unit)
        amount /= 1024;
    // Not printf, which would write a comma for the point in some locales.
    std::array<char, 32> digits{};
    auto const written = std::to_chars(digits.data(), digits.data() + digits.size(), amount, std::chars_format::fixed,
                                       amount < 10 ? 1 : 0);
    *written.ptr = units[unit];
    return {digits.data(), written.ptr + 1};
}

std::string const &date(std::int64_t seconds)
{
    static std::string const unknown;
    static std::unordered_map<std::int64_t, std::string> cache;
    if (seconds == 0)
        return unknown;
    auto const minute = minuteOf(seconds);
    auto const found = cache.find(minute);
    if (found != cache.end())
        return found->second;
    if (cache.size() > cachedDates)
        cache.clear();
    return cache.emplace(minute, formatted(seconds)).first->second;
}

std::string mode(std::uint16_t bits, EntryKind kind)
{
    std::string text(1, '-');
    switch (kind) {
    case EntryKind::directory:
    case EntryKind::symlink:
    case EntryKind::blockDev:
    case EntryKind::charDev:
    case EntryKind::fifo:
    case EntryKind::socket:
        text[0] = static_cast<char>(kind);
        break;
    case EntryKind::file:
    case EntryKind::unknown:
        break;
    }
    for (int const shift : {6, 3, 0}) {
        auto const triplet = bits >> shift;
        text += (triplet & 4) != 0 ? 'r' : '-';
        text += (triplet & 2) != 0 ? 'w' : '-';
        text += (triplet & 1) != 0 ? 'x' : '-';
    }
    return text;
}

SplitName splitExtension(std::string_view name, IsDirectory isDirectory)
{
    SplitName const whole{.base = name, .extension = {}};
    if (isDirectory == IsDirectory::yes)
        return whole;
    auto const dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return whole;
    auto const extension = name.substr(dot + 1);
    if (extension.empty() || !hasAtMost(longestExtension, extension))
        return whole;
    return {.base = name.substr(0, dot), .extension = extension};
}

std::string iconKey(std::string_view name, EntryKind kind)
{
    auto const word = [](std::string_view text) { return std::string(1, '\0').append(text); };
    switch (kind) {
    case EntryKind::directory:
        return word("dir");
    case EntryKind::symlink:
        return word("link");
    case EntryKind::file: {
        auto const extension = splitExtension(name, IsDirectory::no).extension;
        return extension.empty() ? word("file") : lowerCase(extension);
    }
    case EntryKind::blockDev:
    case EntryKind::charDev:
    case EntryKind::fifo:
    case EntryKind::socket:
    case EntryKind::unknown:
        break;
    }
    return word("special");
}

} // namespace tw::Fmt
