#pragma once

#include "Tarnwick/Table/NamePattern.h"

#include <string_view>
#include <vector>

namespace tw {

/// Wildcard patterns as the shell knows them, separated by blanks or semicolons: "*.txt;*.md". Case counts; a "*" also
/// stands for a dot at the beginning, and an unclosed "[" for itself.
class NameMask {
public:
    /// A longer one would take seconds in a large folder.
    static constexpr std::size_t longestBytes = 1000;

    explicit NameMask(std::string_view text);

    /// Whether one of the patterns matches the whole name. The name holds no zero byte.
    bool matches(std::string_view name) const;

private:
    std::vector<NamePattern> patterns;
};

} // namespace tw
