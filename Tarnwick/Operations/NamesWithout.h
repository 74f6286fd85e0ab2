#pragma once

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace tw {

/// The names that are not in `others`, in their order.
inline std::vector<std::string> namesWithout(std::vector<std::string> const &names,
                                             std::vector<std::string> const &others)
{
    std::unordered_set<std::string_view> const without(others.begin(), others.end());
    std::vector<std::string> left;
    std::ranges::copy_if(names, std::back_inserter(left), [&](auto const &name) { return !without.contains(name); });
    return left;
}

} // namespace tw
