#include "Tarnwick/Table/NameMask.h"

#include <algorithm>

namespace tw {

NameMask::NameMask(std::string_view text)
{
    constexpr std::string_view separators = " ;";
    for (;;) {
        auto const start = std::min(text.find_first_not_of(separators), text.size());
        text.remove_prefix(start);
        if (text.empty())
            return;
        auto const piece = text.substr(0, text.find_first_of(separators));
        patterns.emplace_back(std::string(piece));
        text.remove_prefix(piece.size());
    }
}

bool NameMask::matches(std::string_view name) const
{
    return std::ranges::any_of(patterns, [&](NamePattern const &pattern) { return pattern.matches(name); });
}

} // namespace tw
