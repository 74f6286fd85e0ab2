#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// A regular expression whose characters are bytes, as `grep -P` understands it in the C locale. ICU runs it here.
///
/// A match lies within one line and is not empty.
namespace tw::ByteExpression {

struct Match {
    std::size_t from = 0; ///< in the text
    std::size_t to = 0;

    friend bool operator==(Match const &, Match const &) = default;
};

/// Thrown when a line takes more time or memory than a match may: some expressions try each of countless ways.
class TooSlow final : public std::exception {
public:
    char const *what() const noexcept override { return "the expression takes too long in this file"; }
};

/// Whether it is an expression at all.
bool isValid(std::string_view pattern);

/// Calls `visit` with one match after the other, until it answers false. The pattern must be valid. Throws TooSlow.
void eachMatch(std::string_view pattern, std::string_view text, std::function<bool(Match)> const &visit);

} // namespace tw::ByteExpression
