#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// What keeps `name` from being the name of a new folder, in words for the user; nothing if it can be one. What else a
/// file system refuses it says itself.
std::optional<std::string> objectionToFolderName(std::string_view name);

} // namespace tw
