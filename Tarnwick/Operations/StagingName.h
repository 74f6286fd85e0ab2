#pragma once

#include <string>
#include <string_view>

namespace tw {

/// What the name of a folder begins with in which files wait at their target until they get their names.
inline constexpr std::string_view stagingPrefix = ".tw-paste-";

/// A new one, unlike any other.
std::string stagingName();

} // namespace tw
