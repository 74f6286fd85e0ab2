#include "Tarnwick/Table/NamePattern.h"

#include <unicode/utf8.h>

#include <algorithm>

#include <fnmatch.h>

namespace tw {

namespace {

constexpr auto npos = std::string_view::npos;

bool systemMatches(std::string const &pattern, std::string const &name)
{
    return fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
}

/// Letters of two and three bytes: there are encodings in which two bytes of UTF-8 are one letter of another kind.
bool isLocaleUtf8()
{
    return systemMatches("?", "\u00E9") && systemMatches("?", "\u4E00");
}

bool isAscii(std::string_view bytes)
{
    return std::ranges::all_of(bytes, [](char byte) { return U8_IS_SINGLE(byte); });
}

/// Bytes of the letter at the beginning of `text`, or 0 if that is no valid UTF-8.
std::size_t letterLength(std::string_view text)
{
    std::int32_t length = 0;
    UChar32 letter = 0;
    U8_NEXT(text.data(), length, static_cast<std::int32_t>(std::min<std::size_t>(text.size(), U8_MAX_LENGTH)), letter);
    return letter < 0 ? 0 : static_cast<std::size_t>(length);
}

std::size_t lengthOfFirst(std::string_view text, bool isLetter)
{
    return isLetter ? letterLength(text) : 1;
}

bool isUtf8Text(std::string_view bytes)
{
    while (!bytes.empty()) {
        auto const length = letterLength(bytes);
        if (length == 0)
            return false;
        bytes.remove_prefix(length);
    }
    return true;
}

/// The bytes of a bracket at the beginning of `pattern`, or nothing if it does not end plainly.
std::optional<std::size_t> bracketLength(std::string_view pattern)
{
    auto const first = pattern.substr(1).starts_with('!') || pattern.substr(1).starts_with('^') ? 2U : 1U;
    auto const end = pattern.find_first_of("[]\\", first);
    if (end == npos || end == first || pattern[end] != ']')
        return std::nullopt;
    return end + 1;
}

} // namespace

NamePattern::NamePattern(std::string pattern) : text(std::move(pattern)), parts(partsOf(text)), isUtf8(isLocaleUtf8())
{
    if (!parts)
        return;
    hasLetters = std::ranges::any_of(*parts, [](Part const &part) {
        return part.kind == Part::Kind::anyLetter || part.kind == Part::Kind::letterOf;
    });
    for (std::size_t place = 0; place < parts->size(); ++place) {
        auto const kind = (*parts)[place].kind;
        tailBytes += kind == Part::Kind::text ? (*parts)[place].text.size() : 1;
        if (kind == Part::Kind::anyText) {
            lastStar = place;
            tailBytes = 0;
        }
    }
    // fnmatch matches by bytes then.
    if (hasLetters && !isAscii(text) && !(isUtf8 && isUtf8Text(text)))
        parts.reset();
}

std::optional<std::vector<NamePattern::Part>> NamePattern::partsOf(std::string_view pattern)
{
    using enum Part::Kind;
    std::vector<Part> parts;
    auto const addText = [&](char byte) {
        if (parts.empty() || parts.back().kind != Part::Kind::text)
            parts.push_back({.kind = Part::Kind::text});
        parts.back().text += byte;
    };
    while (!pattern.empty()) {
        std::size_t length = 1;
        if (pattern.front() == '*') {
            if (parts.empty() || parts.back().kind != anyText)
                parts.push_back({.kind = anyText});
        } else if (pattern.front() == '?') {
            parts.push_back({.kind = anyLetter});
        } else if (pattern.front() == '[') {
            auto const bracket = bracketLength(pattern);
            if (!bracket)
                return std::nullopt;
            length = *bracket;
            Part set{.kind = letterOf, .text = std::string(pattern.substr(0, length))};
            for (std::size_t byte = 1; byte < set.bytes.size(); ++byte)
                set.bytes[byte] = systemMatches(set.text, std::string(1, static_cast<char>(byte)));
            parts.push_back(std::move(set));
        } else if (pattern.front() == '\\') {
            if (pattern.size() == 1)
                return std::nullopt;
            length = 2;
            addText(pattern[1]);
        } else {
            addText(pattern.front());
        }
        pattern.remove_prefix(length);
    }
    return parts;
}

bool NamePattern::matches(std::string_view name) const
{
    if (parts && (!hasLetters || isAscii(name)))
        return partsMatch(name, Unit::byte);
    // glibc compares bytes where letters do not match.
    if (parts && isUtf8 && isUtf8Text(name))
        return partsMatch(name, Unit::letter) || partsMatch(name, Unit::byte);
    return systemMatches(text, std::string(name));
}

bool NamePattern::isIn(Part const &set, std::string_view letter)
{
    if (letter.size() == 1)
        return set.bytes[static_cast<unsigned char>(letter.front())];
    std::uint32_t bytes = 0;
    for (auto const byte : letter)
        bytes = bytes << 8U | static_cast<unsigned char>(byte);
    if (!set.others)
        set.others = std::make_unique<Answers>();
    auto const place = bytes % Answers::count;
    if (std::exchange(set.others->letters[place], bytes) != bytes)
        set.others->isIn[place] = systemMatches(set.text, std::string(letter));
    return set.others->isIn[place];
}

std::optional<std::size_t> NamePattern::lengthOf(Part const &part, std::string_view rest, Unit unit)
{
    if (part.kind == Part::Kind::text)
        return rest.starts_with(part.text) ? std::optional(part.text.size()) : std::nullopt;
    if (rest.empty())
        return std::nullopt;
    auto const length = lengthOfFirst(rest, unit == Unit::letter);
    if (part.kind == Part::Kind::letterOf && !isIn(part, rest.substr(0, length)))
        return std::nullopt;
    return length;
}

std::size_t NamePattern::placeOf(Part const &part, std::string_view name, std::size_t at, Unit unit)
{
    if (part.kind == Part::Kind::text)
        return std::min(name.find(part.text, at), name.size());
    while (at < name.size() && !lengthOf(part, name.substr(at), unit))
        at += lengthOfFirst(name.substr(at), unit == Unit::letter);
    return at;
}

bool NamePattern::partsMatch(std::string_view name, Unit unit) const
{
    if (unit == Unit::letter || !lastStar)
        return headMatches(*parts, name, unit);
    // In bytes, what follows the last star has one length, and so a place that is known.
    auto const all = std::span(*parts);
    if (name.size() < tailBytes)
        return false;
    auto const head = name.substr(0, name.size() - tailBytes);
    name.remove_prefix(head.size());
    for (auto const &part : all.subspan(*lastStar + 1)) {
        auto const length = lengthOf(part, name, unit);
        if (!length)
            return false;
        name.remove_prefix(*length);
    }
    return headMatches(all.first(*lastStar + 1), head, unit);
}

/// Only the last star is tried at several places: what stands before it has been found as early as it can be.
bool NamePattern::headMatches(std::span<Part const> all, std::string_view name, Unit unit)
{
    std::optional<std::size_t> afterStar;
    std::size_t tried = 0; // where the part after the star begins
    std::size_t at = 0;
    std::size_t next = 0;
    for (;;) {
        if (next < all.size() && all[next].kind == Part::Kind::anyText) {
            afterStar = ++next;
            if (next == all.size())
                return true;
            at = tried = placeOf(all[next], name, at, unit);
        }
        if (next == all.size() && at == name.size())
            return true;
        auto const length = next < all.size() ? lengthOf(all[next], name.substr(at), unit) : std::nullopt;
        if (length) {
            at += *length;
            ++next;
            continue;
        }
        if (!afterStar || tried >= name.size())
            return false;
        next = *afterStar;
        tried += lengthOfFirst(name.substr(tried), unit == Unit::letter && all[next].kind != Part::Kind::text);
        at = tried = placeOf(all[next], name, tried, unit);
    }
}

} // namespace tw
