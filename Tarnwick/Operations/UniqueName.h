#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tw {

/// Whether a name is taken in some folder.
using IsTaken = std::function<bool(std::string const &name)>;

/// The highest number that a name is given to be unique.
inline constexpr int highestUniqueNumber = 9999;

/// "a(2).txt" for "a.txt" and 2: the number stands before the extension.
std::string numberedName(std::string_view name, int number);

/// `name`, or the first of "name(2)" to "name(9999)" that is free; `name` itself if all are taken.
std::string uniqueName(std::string const &name, IsTaken const &isTaken);

} // namespace tw
