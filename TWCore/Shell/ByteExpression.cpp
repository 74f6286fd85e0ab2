#include "TWCore/Shell/ByteExpression.h"

#include "TWCore/Check.h"

#include <unicode/regex.h>

#include <algorithm>
#include <chrono>
#include <memory>

namespace tw::ByteExpression {

namespace {

/// Of one attempt to match. ICU counts steps of its own, about one for a millisecond.
constexpr std::int32_t mostStepsOfMatch = 1000;

/// Bytes of ICU's stack, on which it notes the ways that it can come back to.
constexpr std::int32_t mostBytesOfStack = 8'000'000;

/// Of all lines of a text together.
constexpr std::chrono::seconds mostTime(10);

std::u16string widened(std::string_view bytes)
{
    std::u16string units(bytes.size(), u'\0');
    std::ranges::transform(bytes, units.begin(),
                           [](char byte) { return static_cast<char16_t>(static_cast<unsigned char>(byte)); });
    return units;
}

icu::UnicodeString aliasOf(std::u16string const &units)
{
    return icu::UnicodeString(static_cast<UBool>(false), units.data(), static_cast<std::int32_t>(units.size()));
}

std::unique_ptr<icu::RegexPattern> compiled(std::string_view pattern)
{
    UParseError place;
    auto status = U_ZERO_ERROR;
    auto const units = widened(pattern);
    std::unique_ptr<icu::RegexPattern> expression(icu::RegexPattern::compile(aliasOf(units), 0, place, status));
    return U_SUCCESS(status) ? std::move(expression) : nullptr;
}

/// Looks through one line. False if `visit` has enough.
bool visitLine(icu::RegexMatcher &matcher, Match line, std::function<bool(Match)> const &visit)
{
    auto status = U_ZERO_ERROR;
    matcher.region(static_cast<std::int64_t>(line.from), static_cast<std::int64_t>(line.to), status);
    while (matcher.find(status) && U_SUCCESS(status)) {
        Match const match{.from = static_cast<std::size_t>(matcher.start64(status)),
                          .to = static_cast<std::size_t>(matcher.end64(status))};
        if (match.from < match.to && !visit(match))
            return false;
    }
    if (U_FAILURE(status))
        throw TooSlow();
    return true;
}

} // namespace

bool isValid(std::string_view pattern)
{
    return compiled(pattern) != nullptr;
}

void eachMatch(std::string_view pattern, std::string_view text, std::function<bool(Match)> const &visit)
{
    auto const expression = compiled(pattern);
    check(expression != nullptr, "the expression is valid");
    auto const units = widened(text);
    auto const input = aliasOf(units);
    auto status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> const matcher(expression->matcher(input, status));
    matcher->setTimeLimit(mostStepsOfMatch, status);
    matcher->setStackLimit(mostBytesOfStack, status);
    auto const until = std::chrono::steady_clock::now() + mostTime;
    for (std::size_t begin = 0; begin < text.size();) {
        auto const end = std::min(text.find('\n', begin), text.size());
        if (begin < end && !visitLine(*matcher, {begin, end}, visit))
            return;
        if (std::chrono::steady_clock::now() > until)
            throw TooSlow();
        begin = end + 1;
    }
}

} // namespace tw::ByteExpression
