#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// What keeps `name` from being the new name of a file or a folder, in words for the user; nothing if it can be one.
/// What else a file system refuses it says itself.
std::optional<std::string> objectionToNewName(std::string_view name);

} // namespace tw
