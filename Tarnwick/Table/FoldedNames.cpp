#include "Tarnwick/Table/FoldedNames.h"

#include "TWCore/Check.h"
#include "TWCore/Model/DisplayText.h"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>

#include <algorithm>
#include <cstring>

namespace tw {

namespace {

constexpr char separator = '\0';

/// Stands for a zero byte in a name, which a host may claim. No one types it.
constexpr char notTyped = '\1';

bool isAscii(std::string_view bytes)
{
    unsigned char all = 0;
    for (auto const byte : bytes)
        all |= static_cast<unsigned char>(byte);
    return all < 0x80;
}

char foldedAscii(char letter)
{
    if (letter >= 'A' && letter <= 'Z')
        return static_cast<char>(letter - 'A' + 'a');
    return letter == separator ? notTyped : letter;
}

/// Folded by all of Unicode, and composed: some file systems hand out names in pieces of letters.
void appendFolded(std::string &text, std::string_view name)
{
    if (isAscii(name)) {
        auto const start = text.size();
        text.append(name);
        std::transform(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(),
                       text.begin() + static_cast<std::ptrdiff_t>(start), foldedAscii);
        return;
    }
    auto status = U_ZERO_ERROR;
    auto const readable = repaired(name);
    std::string folded;
    icu::StringByteSink<std::string> intoFolded(&folded);
    icu::CaseMap::utf8Fold(0, readable, intoFolded, nullptr, status);
    std::string composed;
    icu::StringByteSink<std::string> intoComposed(&composed);
    icu::Normalizer2::getNFCInstance(status)->normalizeUTF8(0, folded, intoComposed, nullptr, status);
    check(U_SUCCESS(status) != 0, "ICU came without its data for letters");
    std::ranges::replace(composed, separator, notTyped);
    text += composed;
}

/// glibc's own search, which is several times as fast as that of std::string for a needle with a frequent first byte.
std::size_t positionOf(std::string_view needle, std::string_view text)
{
    auto const *const found = memmem(text.data(), text.size(), needle.data(), needle.size());
    return found ? static_cast<std::size_t>(static_cast<char const *>(found) - text.data()) : std::string_view::npos;
}

} // namespace

FoldedNames::FoldedNames(DirectorySnapshot const &listing, std::span<std::uint32_t const> rows)
{
    starts.reserve(rows.size());
    std::size_t bytes = 1;
    for (auto const row : rows)
        bytes += 1 + listing.entries()[row].nameLength;
    text.reserve(bytes);
    for (auto const row : rows) {
        starts.push_back(static_cast<std::uint32_t>(text.size()));
        text += separator;
        appendFolded(text, listing.nameBytes(listing.entries()[row]));
    }
    text += separator;
}

std::optional<std::size_t> FoldedNames::find(std::string_view typed, std::size_t from) const
{
    if (from >= starts.size())
        from = 0;
    if (starts.empty() || typed.empty())
        return std::nullopt;
    std::string wanted(1, separator);
    appendFolded(wanted, typed);
    auto const beginning = findRound(wanted, from);
    return beginning ? beginning : findRound(std::string_view(wanted).substr(1), from);
}

std::optional<std::size_t> FoldedNames::findRound(std::string_view wanted, std::size_t from) const
{
    auto const start = starts[from];
    auto const all = std::string_view(text);
    auto position = positionOf(wanted, all.substr(start));
    if (position != std::string_view::npos)
        position += start;
    else
        position = positionOf(wanted, all.substr(0, start));
    if (position == std::string_view::npos)
        return std::nullopt;
    auto const next = std::ranges::upper_bound(starts, position);
    return static_cast<std::size_t>(next - starts.begin()) - 1;
}

} // namespace tw
